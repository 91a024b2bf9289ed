#pragma once
#include "platform/key_state.h"

namespace kdx {

class QtKeyState : public KeyState {
public:
    bool shiftDown() const override;
};

} // namespace kdx
