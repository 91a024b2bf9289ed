#pragma once
// The windows' named timers, driven in simulated time. advance(ms) moves the clock and
// fires every running timer (interval above 0) each time its interval comes round,
// in time order, through its timeout signal, as the event loop would; a single-shot
// timer stops as it fires. After each firing the posted events (boxes posted by a
// handler) are delivered. A timer started during an advance first fires one interval
// after the moment it was found running.
#include "fakes/manual_clock.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QObject>
#include <QTimer>
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <vector>

namespace kdx::test {

class FakeScheduler {
public:
    // `roots`: the windows whose child timers are driven. The clock is referenced.
    FakeScheduler(ManualClock& clock, std::vector<QObject*> roots) : clock_(clock), roots_(std::move(roots)) {}

    void advance(int64_t ms)
    {
        const int64_t end = nowMs_ + ms;
        for (;;) {
            track();
            QTimer* next = nullptr;
            int64_t at = end;
            for (const auto& [timer, due] : due_) {
                if (due > end) continue;
                if (!next || due < at || (due == at && order_[timer] < order_[next])) {
                    next = timer;
                    at = due;
                }
            }
            if (!next) break;
            moveTo(at);
            if (next->isSingleShot()) {
                next->stop();
                due_.erase(next);
            } else {
                due_[next] += next->interval();
            }
            if (!QMetaObject::invokeMethod(next, "timeout"))
                ADD_FAILURE() << "cannot fire " << next->objectName().toStdString();
            QCoreApplication::sendPostedEvents();
        }
        moveTo(end);
    }
    int64_t nowMs() const { return nowMs_; }

private:
    void moveTo(int64_t ms)
    {
        clock_.now += (ms - nowMs_) * 1'000'000;
        nowMs_ = ms;
    }
    // Starts following the timers found running, forgets the ones found stopped.
    void track()
    {
        std::map<QTimer*, int64_t> running;
        int order = 0;
        for (QObject* root : roots_) {
            for (QTimer* t : root->findChildren<QTimer*>()) {
                order_[t] = order++;
                if (!t->isActive() || t->interval() <= 0) continue;
                const auto known = due_.find(t);
                running[t] = known != due_.end() ? known->second : nowMs_ + t->interval();
            }
        }
        due_ = std::move(running);
    }

    ManualClock& clock_;
    std::vector<QObject*> roots_;
    int64_t nowMs_ = 0;
    std::map<QTimer*, int64_t> due_; // running timers and when each fires next
    std::map<QTimer*, int> order_;   // creation order, for timers due together
};

} // namespace kdx::test
