#include "platform/qt_guard.h"

Q_LOGGING_CATEGORY(lcKdxHandler, "kdx.handler", QtWarningMsg)

namespace kdx {

void reportHandlerFault(const char* handler, const char* what) noexcept
{
    try {
        qCWarning(lcKdxHandler, "handler %s abandoned: %s", handler, what);
    } catch (...) {
        // Nothing left to report with; the handler is abandoned all the same.
    }
}

void noteHostError(const char* handler, const char* what) noexcept
{
    try {
        qCDebug(lcKdxHandler, "handler %s abandoned: %s", handler, what);
    } catch (...) {
    }
}

} // namespace kdx
