#include "widgets/posted_box.h"

#include "platform/qt_guard.h"

#include <QTimer>

namespace kdx {

void PostedBox::post(std::function<void()> show)
{
    if (busy_) return;
    busy_ = true;
    QTimer::singleShot(0, owner_, [this, show = std::move(show)] {
        guarded("posted message box", show);
        busy_ = false;
    });
}

} // namespace kdx
