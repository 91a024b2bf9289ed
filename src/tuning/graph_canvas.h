#pragma once
// The drawing surface of the tuning graph (the picture `Graphpb`). The renderer speaks
// canvas pixels: origin at the top left, y downwards, (width, height) the far corner.
#include <array>
#include <cstdint>
#include <string>

namespace kdx {

// One value label beside the graph: its height in canvas pixels (level with a horizontal
// grid line) and its text.
struct AxisLabel {
    double y = 0;
    std::string text;
    bool operator==(const AxisLabel&) const = default;
};
constexpr int kAxisLabelCount = 9;
using AxisLabels = std::array<AxisLabel, kAxisLabelCount>;

class GraphCanvas {
public:
    virtual ~GraphCanvas() = default;
    // Inner size in pixels; 0 while the window is minimised or not laid out yet.
    virtual double width() const = 0;
    virtual double height() const = 0;
    // Fills the whole picture with a blue-green-red colour.
    virtual void clear(uint32_t bgr) = 0;
    // A solid line `penWidth` pixels wide. Erasing is drawing the same line in the
    // background colour, so an implementation must not antialias: the erase has to cover
    // exactly the pixels the draw covered.
    virtual void line(double x0, double y0, double x1, double y1, uint32_t bgr, double penWidth) = 0;
    // The nine value labels of one axis (0: Y1 on the left, 1: Y2 on the right), top to
    // bottom. They stand outside the picture; y says which grid line each is level with.
    virtual void axisLabels(int axis, const AxisLabels& labels) = 0;
};

} // namespace kdx
