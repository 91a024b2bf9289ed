#include "tuning/graph_view_window.h"

#include "core/colour.h"
#include "tuning/graph_renderer.h"

#include <QPaintEvent>
#include <QPainter>
#include <QResizeEvent>

namespace kdx {

GraphView::GraphView(QWidget* parent) : QWidget(parent)
{
    // Every pixel comes from the image: Qt need not erase first.
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    // Strokes collect the area they drew on, and the pacer repaints that area: the samples
    // between two repaints repaint a few narrow columns once, not the whole graph and not
    // once per sample.
    canvas_.setOnChanged([this] { framePacer_.changed(); });
}

QSize GraphView::sizeHint() const { return {800, 400}; }
QSize GraphView::minimumSizeHint() const { return {240, 120}; }

void GraphView::paintEvent(QPaintEvent* event)
{
    QPainter p(this);
    const QImage& image = canvas_.image();
    if (image.isNull()) {
        const Rgb c = fromBgr(graph_colour::Background);
        p.fillRect(event->rect(), QColor(c.r, c.g, c.b));
        return;
    }
    const int k = canvas_.scale(); // the image's device pixels per logical pixel
    const QRect r = event->rect();
    p.drawImage(r, image, QRect(r.topLeft() * k, r.size() * k));
}

void GraphView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    canvas_.resize(width(), height(), devicePixelRatioF());
    update();
    if (width() > 0 && height() > 0 && onResized_) onResized_();
}

} // namespace kdx

#include "moc_graph_view_window.cpp"
