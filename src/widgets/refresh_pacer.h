#pragma once
// The pace of a display that follows data arriving many times a second. Refreshes are at
// least `spacingMs` apart, and a change waits at most `maxWaitMs` to be shown. A change
// that finds the last refresh `spacingMs` old is shown at once, in the same wakeup as the
// data that brought it; one that comes sooner waits for the next such arrival, so a steady
// stream costs the display no wakeup of its own. A timer shows a change that has waited
// `maxWaitMs`: only when the data stops, or comes too seldom to show itself in time.
#include "platform/clock.h"

#include <QTimer>

#include <cstdint>
#include <functional>
#include <optional>

namespace kdx {

class RefreshPacer {
public:
    // `refresh` paints what changed. The timer is a child of `owner`, named `timerName`.
    RefreshPacer(QObject* owner, const char* timerName, int spacingMs, int maxWaitMs, std::function<void()> refresh,
                 Clock& clock = systemClock());

    // Something to show has arrived.
    void changed();
    // Shows what is waiting now, whatever the time since the last refresh.
    void flush();
    // Refreshes now, waiting or not (a window coming into view), and counts it as a refresh.
    void refreshNow() { refresh(clock_.nowNs()); }
    // Forgets a change waiting to be shown (the window went out of view).
    void drop();

private:
    void refresh(int64_t nowNs);

    QTimer* timer_;
    int64_t spacingNs_;
    std::function<void()> refresh_;
    Clock& clock_;
    std::optional<int64_t> lastNs_;
    bool pending_ = false;
};

} // namespace kdx
