#include "tuning/qt_image_canvas.h"

#include "core/colour.h"
#include "tuning/graph_renderer.h"

#include <cmath>
#include <cstdlib>
#include <utility>
#include <algorithm>

namespace kdx {

namespace {

QColor toQColor(uint32_t bgr)
{
    const Rgb c = fromBgr(bgr);
    return QColor(c.r, c.g, c.b);
}

// Cuts the segment to the rectangle [0, w] x [0, h] (Liang-Barsky). False when nothing
// of it lies inside, or when a coordinate is not a finite number.
bool clipTo(double w, double h, double& x0, double& y0, double& x1, double& y1)
{
    if (!std::isfinite(x0) || !std::isfinite(y0) || !std::isfinite(x1) || !std::isfinite(y1)) return false;
    const double dx = x1 - x0, dy = y1 - y0;
    double t0 = 0, t1 = 1;
    // One edge: the part with p * t <= q is inside.
    const auto edge = [&](double p, double q) {
        if (p == 0) return q >= 0;
        const double r = q / p;
        if (p < 0) {
            if (r > t1) return false;
            if (r > t0) t0 = r;
        } else {
            if (r < t0) return false;
            if (r < t1) t1 = r;
        }
        return true;
    };
    if (!edge(-dx, x0) || !edge(dx, w - x0) || !edge(-dy, y0) || !edge(dy, h - y0)) return false;
    const double sx = x0, sy = y0;
    x0 = sx + t0 * dx;
    y0 = sy + t0 * dy;
    x1 = sx + t1 * dx;
    y1 = sy + t1 * dy;
    return true;
}

} // namespace

QtImageCanvas::QtImageCanvas() = default;

QtImageCanvas::~QtImageCanvas() { flush(); }

void QtImageCanvas::resize(int width, int height, double devicePixelRatio)
{
    flush();
    if (width <= 0 || height <= 0) {
        image_ = QImage();
        return;
    }
    const int scale = std::max(1, static_cast<int>(std::lround(devicePixelRatio)));
    if (image_.width() == width * scale && image_.height() == height * scale && scale == scale_) return;
    scale_ = scale;
    // RGB32 is the raster engine's native format, and one pixel is one 32-bit store.
    image_ = QImage(width * scale, height * scale, QImage::Format_RGB32);
    image_.setDevicePixelRatio(scale); // a painter on it, and the blit, work in logical pixels
    image_.fill(toQColor(graph_colour::Background));
}

void QtImageCanvas::flush()
{
    if (painter_.isActive()) painter_.end();
    penValid_ = false;
    pixels_ = nullptr;
}

const QImage& QtImageCanvas::image()
{
    flush();
    return image_;
}

void QtImageCanvas::changed(const QRect& area)
{
    dirty_ |= area;
    if (onChanged_) onChanged_();
}

QRect QtImageCanvas::takeDirty()
{
    return std::exchange(dirty_, QRect()) & QRect(0, 0, image_.width() / scale_, image_.height() / scale_);
}

namespace {

// The pixels a stroke of this width between two points can touch.
QRect strokeBounds(double x0, double y0, double x1, double y1, double penWidth)
{
    const double reach = penWidth / 2 + 1;
    const int left = static_cast<int>(std::floor(std::min(x0, x1) - reach));
    const int top = static_cast<int>(std::floor(std::min(y0, y1) - reach));
    const int right = static_cast<int>(std::ceil(std::max(x0, x1) + reach));
    const int bottom = static_cast<int>(std::ceil(std::max(y0, y1) + reach));
    return QRect(QPoint(left, top), QPoint(right, bottom));
}

} // namespace

QPainter& QtImageCanvas::painter()
{
    if (!painter_.isActive()) {
        painter_.begin(&image_);
        painter_.setRenderHint(QPainter::Antialiasing, false);
        penValid_ = false;
    }
    return painter_;
}

void QtImageCanvas::setPen(uint32_t bgr, double penWidth)
{
    if (penValid_ && penColour_ == bgr && penWidth_ == penWidth) return;
    QPen pen(toQColor(bgr));
    pen.setWidthF(penWidth);
    painter_.setPen(pen);
    penValid_ = true;
    penColour_ = bgr;
    penWidth_ = penWidth;
}

void QtImageCanvas::clear(uint32_t bgr)
{
    if (image_.isNull()) return;
    const QRect all(0, 0, image_.width() / scale_, image_.height() / scale_);
    changed(all);
    if (painter_.isActive()) painter_.fillRect(all, toQColor(bgr));
    else image_.fill(toQColor(bgr));
}

void QtImageCanvas::line(double x0, double y0, double x1, double y1, uint32_t bgr, double penWidth)
{
    if (image_.isNull()) return;
    if (penWidth <= 1) {
        thinLine(x0, y0, x1, y1, bgr);
        return;
    }
    if (!std::isfinite(x0) || !std::isfinite(y0) || !std::isfinite(x1) || !std::isfinite(y1)) return;
    changed(strokeBounds(x0, y0, x1, y1, penWidth));
    if (scale_ != 1 && (x0 == x1 || y0 == y1)) {
        // A wide stroke along an axis (the sweep cursor, the border) on a scaled image:
        // the rectangle a square-capped pen covers, set in device pixels, which costs a
        // fraction of a transformed painter stroke.
        const double r = penWidth / 2;
        fillDeviceRect(std::min(x0, x1) - r, std::min(y0, y1) - r, std::max(x0, x1) + r, std::max(y0, y1) + r, bgr);
        return;
    }
    QPainter& p = painter();
    setPen(bgr, penWidth);
    p.drawLine(QLineF(x0, y0, x1, y1));
}

// The device pixels whose centres lie in the logical rectangle (left, top)-(right, bottom).
void QtImageCanvas::fillDeviceRect(double left, double top, double right, double bottom, uint32_t bgr)
{
    const auto edge = [this](double v, int limit) {
        return std::clamp(static_cast<int>(std::lround(v * scale_)), 0, limit);
    };
    const int x0 = edge(left, image_.width()), x1 = edge(right, image_.width());
    const int y0 = edge(top, image_.height()), y1 = edge(bottom, image_.height());
    if (x0 >= x1 || y0 >= y1) return;
    if (painter_.isActive()) flush(); // strokes stay in order with what the painter holds
    if (!pixels_) pixels_ = image_.bits();
    const qsizetype stride = image_.bytesPerLine();
    const Rgb c = fromBgr(bgr);
    const QRgb colour = qRgb(c.r, c.g, c.b);
    for (int y = y0; y < y1; ++y) std::fill_n(reinterpret_cast<QRgb*>(pixels_ + y * stride) + x0, x1 - x0, colour);
}

// A one-pixel line: the pixels containing the two end points and the Bresenham path
// between them, both ends included. On a scaled image the path runs through device
// pixels, so a slope steps as finely as the screen can show.
void QtImageCanvas::thinLine(double x0, double y0, double x1, double y1, uint32_t bgr)
{
    const int w = image_.width(), h = image_.height();
    if (scale_ != 1) {
        x0 *= scale_, y0 *= scale_, x1 *= scale_, y1 *= scale_;
    }
    if (!clipTo(w, h, x0, y0, x1, y1)) return;
    if (scale_ == 1) changed(strokeBounds(x0, y0, x1, y1, 1));
    else changed(strokeBounds(x0 / scale_, y0 / scale_, x1 / scale_, y1 / scale_, 1));
    if (!pixels_) pixels_ = image_.bits(); // detaches a copy handed out before
    const qsizetype stride = image_.bytesPerLine();
    const Rgb c = fromBgr(bgr);
    const QRgb colour = qRgb(c.r, c.g, c.b);

    int x = static_cast<int>(std::floor(x0)), y = static_cast<int>(std::floor(y0));
    const int xe = static_cast<int>(std::floor(x1)), ye = static_cast<int>(std::floor(y1));
    const int dx = std::abs(xe - x), dy = -std::abs(ye - y);
    const int sx = x < xe ? 1 : -1, sy = y < ye ? 1 : -1;
    int err = dx + dy;
    for (;;) {
        // Clipping leaves points on the far edges (x = w, y = h), which are outside.
        if (static_cast<unsigned>(x) < static_cast<unsigned>(w) && static_cast<unsigned>(y) < static_cast<unsigned>(h))
            reinterpret_cast<QRgb*>(pixels_ + y * stride)[x] = colour;
        if (x == xe && y == ye) break;
        const int e2 = 2 * err;
        if (e2 >= dy) {
            err += dy;
            x += sx;
        }
        if (e2 <= dx) {
            err += dx;
            y += sy;
        }
    }
}

void QtImageCanvas::axisLabels(int axis, const AxisLabels& labels)
{
    if (onLabels_) onLabels_(axis, labels);
}

} // namespace kdx
