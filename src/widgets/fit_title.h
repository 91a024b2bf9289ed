#pragma once
// Keeps a box's title whole in its title bar: a short prompt under a long title (the
// system's boxes have several) would otherwise make a box too narrow to show it.
class QWidget;

namespace kdx {

// The width a window needs for its title and the title bar's buttons, in pixels.
int titleBarWidth(const QWidget* window);

// Makes `dialog` at least titleBarWidth wide. Call before showing it.
void fitTitle(QWidget* dialog);

} // namespace kdx
