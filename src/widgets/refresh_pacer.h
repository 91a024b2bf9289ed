#pragma once
// The pace of a display that follows data arriving many times a second. A change is shown
// at once when the last refresh is at least a period old, in the same wakeup as the data
// that brought it; a change that comes sooner waits. While data keeps coming, the next
// arrival after the period shows it, so the display costs no wakeup of its own; when the
// data stops, a timer shows the last change at most a period and a grace later.
#include "platform/clock.h"

#include <QTimer>

#include <cstdint>
#include <functional>
#include <optional>

namespace kdx {

class RefreshPacer {
public:
    // `refresh` paints what changed; it runs at most once per `periodMs`. The timer is a
    // child of `owner`, named `timerName`.
    RefreshPacer(QObject* owner, const char* timerName, int periodMs, std::function<void()> refresh,
                 Clock& clock = systemClock());

    // Something to show has arrived.
    void changed();
    // Shows what is waiting now, whatever the time since the last refresh.
    void flush();
    // Refreshes now, waiting or not (a window coming into view), and counts it as a refresh.
    void refreshNow() { refresh(clock_.nowNs()); }
    // Forgets a change waiting to be shown (the window went out of view).
    void drop();

    // How long past the period a change waits for more data before the timer shows it:
    // longer than the gap between two messages, so a steady stream never wakes the timer.
    static constexpr int GraceMs = 15;

private:
    void refresh(int64_t nowNs);

    QTimer* timer_;
    int64_t periodNs_;
    std::function<void()> refresh_;
    Clock& clock_;
    std::optional<int64_t> lastNs_;
    bool pending_ = false;
};

} // namespace kdx
