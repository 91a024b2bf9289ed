#pragma once
// A message box raised on the receive, telemetry, playback or timer path. It opens once
// the handler that raised it has returned, from the event loop, so the port's read
// handler and the timers never wait on a click (the box's own loop keeps them running
// while it is open). While it waits or is open, raising it again does nothing: one
// failure, one box.
#include <functional>

class QObject;

namespace kdx {

class PostedBox {
public:
    // `owner` is the window the box belongs to; a box still waiting when it goes is dropped.
    explicit PostedBox(QObject* owner) : owner_(owner) {}
    PostedBox(const PostedBox&) = delete;
    PostedBox& operator=(const PostedBox&) = delete;

    // Runs `show` (which opens the box, or decides there is nothing to say) after the
    // current handler, unless this box is already waiting or open.
    void post(std::function<void()> show);
    bool waitingOrOpen() const { return busy_; }

private:
    QObject* owner_;
    bool busy_ = false;
};

} // namespace kdx
