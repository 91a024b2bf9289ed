#pragma once
// The picture of the tuning graph (`Graphpb`): it owns the backing image the renderer
// draws on and only blits it. Strokes mark the area they touched dirty, and that area is
// repainted at most 30 times a second however many samples arrived in between.
#include "tuning/qt_image_canvas.h"
#include "widgets/refresh_pacer.h"

#include <QWidget>

#include <functional>

namespace kdx {

class GraphView : public QWidget {
    Q_OBJECT
public:
    explicit GraphView(QWidget* parent = nullptr);

    // Repaints are at least FrameSpacingMs apart and a stroke waits at most FrameMs to be
    // shown: at 100 samples a second, every fourth sample repaints, 25 times a second.
    // Each repaint costs a round trip to the display server whatever its size, and at a
    // screen frame's pace they were most of the program's CPU.
    static constexpr int FrameMs = 40;
    static constexpr int FrameSpacingMs = 33;

    QtImageCanvas& canvas() { return canvas_; }
    // Runs after a resize has made the image anew at the new size (and not while the
    // picture has no area): the owner redraws the graph from its buffers.
    void setOnResized(std::function<void()> onResized) { onResized_ = std::move(onResized); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QtImageCanvas canvas_;
    RefreshPacer framePacer_{this, "graphFrameTimer", FrameSpacingMs, FrameMs, [this] { update(canvas_.takeDirty()); }};
    std::function<void()> onResized_;
};

} // namespace kdx
