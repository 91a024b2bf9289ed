#include "widgets/click_label.h"

#include "widgets/face_colour.h"

#include <QKeyEvent>
#include <QMouseEvent>

namespace kdx {

ClickLabel::ClickLabel(QWidget* parent) : QLabel(parent)
{
    setFrameShape(QFrame::Panel);
    setFrameShadow(QFrame::Sunken);
    setAlignment(Qt::AlignCenter);
    setMinimumWidth(56);
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::TabFocus); // reachable by keyboard; Enter or Space opens the entry
    setAutoFillBackground(true);
}

void ClickLabel::setBackColour(uint32_t bgr) { paintFace(this, bgr); }

void ClickLabel::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint())) emit clicked();
    QLabel::mouseReleaseEvent(event);
}

void ClickLabel::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter || event->key() == Qt::Key_Space) {
        emit clicked();
        return;
    }
    QLabel::keyPressEvent(event);
}

} // namespace kdx

#include "moc_click_label.cpp"
