#include "platform/qt_key_state.h"

#include <QGuiApplication>

namespace kdx {

bool QtKeyState::shiftDown() const { return QGuiApplication::queryKeyboardModifiers().testFlag(Qt::ShiftModifier); }

} // namespace kdx
