#pragma once
// Every event handler runs through guarded(): a host error (overflow, subscript,
// division by zero) abandons that handler and nothing else. What the handler changed
// before the fault stays changed, and the program keeps running.
#include "core/host_error.h"

#include <QLoggingCategory>

#include <exception>
#include <utility>

// Abandoned handlers. Host errors are debug messages, off unless enabled
// (QT_LOGGING_RULES="kdx.handler.debug=true"): noise on the wire is not news.
// Any other fault is a defect or a resource running out, and is a warning.
Q_DECLARE_LOGGING_CATEGORY(lcKdxHandler)

namespace kdx {

// Reports a handler abandoned by a fault that is not the host's own, naming the handler.
void reportHandlerFault(const char* handler, const char* what) noexcept;
// Notes (at debug level) a handler abandoned by a host error.
void noteHostError(const char* handler, const char* what) noexcept;

// Runs `body`, the body of the handler named `handler` (as in "CommsTimeout_Timer").
template <typename F>
void guarded(const char* handler, F&& body) noexcept
{
    try {
        std::forward<F>(body)();
    } catch (const HostError& e) {
        noteHostError(handler, e.what());
    } catch (const std::exception& e) {
        reportHandlerFault(handler, e.what());
    } catch (...) {
        reportHandlerFault(handler, "an exception of unknown type");
    }
}

} // namespace kdx
