#include "mainwindow/click_label.h"

#include "core/colour.h"

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

void ClickLabel::setBackColour(uint32_t bgr)
{
    const Rgb c = fromBgr(bgr);
    QPalette p = palette();
    const QColor colour(c.r, c.g, c.b);
    if (p.color(QPalette::Window) == colour) return;
    p.setColor(QPalette::Window, colour);
    p.setColor(QPalette::WindowText, Qt::black);
    setPalette(p);
}

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
