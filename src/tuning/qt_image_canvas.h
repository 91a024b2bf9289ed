#pragma once
// The tuning graph's canvas: the renderer draws into a backing QImage, and the picture
// widget only blits that image when Qt repaints it.
//
// Speed matters here: a sample costs a handful of short lines and a redraw of a 60 s
// sweep 12,000 of them. One-pixel lines (the traces and the grid) are therefore set
// straight into the image's pixels, which costs a small fraction of a QPainter call
// with its pen change between the two trace colours. The few wide strokes (the border
// and the sweep cursor) and the fills go through a QPainter that stays open from the
// first of them until flush(); the widget flushes before it blits, so at most one
// painter is begun per screen frame, however many samples arrive in between.
#include "tuning/graph_canvas.h"

#include <QImage>
#include <QPainter>
#include <QRect>

#include <functional>

namespace kdx {

class QtImageCanvas : public GraphCanvas {
public:
    QtImageCanvas();
    ~QtImageCanvas() override;
    QtImageCanvas(const QtImageCanvas&) = delete;
    QtImageCanvas& operator=(const QtImageCanvas&) = delete;

    // Makes the image anew at this size in logical pixels, filled with the graph
    // background; the old picture is dropped, so the caller redraws. A zero side leaves
    // no image and the renderer draws nothing. At a device pixel ratio above 1 the image
    // holds that many device pixels per logical one (rounded to a whole number) and is
    // drawn at that resolution: sharp on a high-density screen, not pixel-doubled.
    void resize(int width, int height, double devicePixelRatio = 1);
    // Device pixels per logical pixel of the image.
    int scale() const { return scale_; }
    // Ends the open painter, if any, so the image holds every stroke made so far.
    void flush();
    // The picture as drawn so far (flushes first). A copy taken of it stays as it was.
    const QImage& image();

    // Called after every stroke: the widget decides when to repaint what takeDirty() then
    // returns.
    void setOnChanged(std::function<void()> onChanged) { onChanged_ = std::move(onChanged); }
    // The part of the image changed since the last call, in logical pixels.
    QRect takeDirty();
    // Receives the value labels of each axis as the renderer places them.
    void setOnLabels(std::function<void(int axis, const AxisLabels&)> onLabels) { onLabels_ = std::move(onLabels); }

    // GraphCanvas.
    double width() const override { return logicalWidth(); }
    double height() const override { return logicalHeight(); }
    void clear(uint32_t bgr) override;
    // Not antialiased: an erase (the same line in the background colour) covers exactly
    // the pixels the line covered. A line with a coordinate that is not a finite number
    // is not drawn.
    void line(double x0, double y0, double x1, double y1, uint32_t bgr, double penWidth) override;
    void axisLabels(int axis, const AxisLabels& labels) override;

private:
    void changed(const QRect& area);
    QPainter& painter();
    void setPen(uint32_t bgr, double penWidth);
    void thinLine(double x0, double y0, double x1, double y1, uint32_t bgr);
    void fillDeviceRect(double left, double top, double right, double bottom, uint32_t bgr);

    QImage image_;
    int scale_ = 1;
    // The image is `scale_` times the logical size in each direction: the division is exact.
    int logicalWidth() const { return image_.width() / scale_; }
    int logicalHeight() const { return image_.height() / scale_; }
    QPainter painter_;
    // The image's pixels while it is being drawn on; fetched again after each flush, so
    // a copy handed out by image() is detached from before the next stroke.
    uchar* pixels_ = nullptr;
    QRect dirty_;
    // The pen last given to the open painter, so consecutive wide strokes of one colour
    // and width do not set it again.
    bool penValid_ = false;
    uint32_t penColour_ = 0;
    double penWidth_ = 0;
    std::function<void()> onChanged_;
    std::function<void(int, const AxisLabels&)> onLabels_;
};

} // namespace kdx
