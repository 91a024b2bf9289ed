#pragma once

namespace kdx {

// Whether the Shift key is held at this moment (asked during a click).
class KeyState {
public:
    virtual ~KeyState() = default;
    virtual bool shiftDown() const = 0;
};

} // namespace kdx
