#pragma once
// Tightens a window's layouts so that a form of many rows fits a small screen
// (1366 x 768): less space between rows and inside frames, the same controls.
class QWidget;

namespace kdx {

// Sets the spacing of every layout below `root` to `spacing` pixels and the margins of
// the frames' layouts to `margin` pixels (top and bottom half that), once, after the
// window's controls are built.
void compactLayouts(QWidget* root, int spacing, int margin);

} // namespace kdx

class QMainWindow;

namespace kdx {

// Lets `window` be made smaller than its controls need: its central widget moves into a
// scroll area, which shows scroll bars only while the window is cut below that size.
void allowScrolling(QMainWindow* window);

} // namespace kdx
