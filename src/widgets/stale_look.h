#pragma once
// Greys a live value's text while the link is lost, so an old reading is not taken for a
// fresh one. The grey lies halfway between the palette's text and background colours, so
// it stays readable on light and dark palettes alike.
class QPalette;
class QWidget;
class QColor;

namespace kdx {

// The text colour of a stale value on this palette: midway between WindowText and Window.
QColor staleTextColour(const QPalette& palette);

// Shows `w`'s text greyed (stale) or in the palette's text colour again. Only the text
// colour changes; a widget already in that state is left alone.
void showStale(QWidget* w, bool stale);

} // namespace kdx
