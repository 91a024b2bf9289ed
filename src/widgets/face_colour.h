#pragma once
// Painting a control's face (a button's face, a label's background) in one of the
// system's BGR colours: the one helper every window uses.
//
// A style keeps the pixmaps it draws a button's face with under the identity of the
// palette, and each QWidget::setPalette hands the widget a palette of a new identity, even
// for colours it had before. A face going green, grey, green ... would leave new pixmaps
// in the style's cache at every change. The faces painted here are drawn through one
// style that gives the style beneath it prepared palettes instead, kept in a small cache
// keyed by colour, so each look of a face is drawn and cached once.
#include <cstdint>

class QWidget;

namespace kdx {

// Paints `w`'s face in `bgr`: the Button and Window colours, with black text on them. A
// face that has the colour already is left alone, so an unchanged state costs no repaint.
void paintFace(QWidget* w, uint32_t bgr);

} // namespace kdx
