#pragma once
// The tuning graph: grid, value labels, the two traces segment by segment, the sweep
// cursor, and the axis ranges with their default and automatic scaling. Draws on a
// GraphCanvas from the trace buffer; the buffer is the only state a redraw needs.
//
// Sizes: the graph's margins and cursor marks were designed in picture units of 1/15
// pixel (twips at 96 dpi) on a picture a few hundred pixels high. The renderer keeps
// those constants and divides them by unitsPerPixel (15 by default), so on a pixel
// canvas the graph looks as it was designed. Pen widths are pixels already.
#include "tuning/graph_canvas.h"
#include "tuning/trace_buffer.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace kdx {

namespace graph_colour {
constexpr uint32_t Background = 0x808080; // also used to erase
constexpr uint32_t RateTrace = 0xFFFF00;  // cyan, channel 0, `AxisRatelb` text
constexpr uint32_t ErrorTrace = 0x01FFFF; // yellow, channel 1, `AxisAnglelb` text
constexpr uint32_t Grid = 756267;         // dark green
constexpr uint32_t GridBright = 1037889;  // zero line, middle second, border
constexpr uint32_t Cursor = 0xFFFFFF;
constexpr std::array<uint32_t, 2> Trace = {RateTrace, ErrorTrace};
// A pinned reference sweep: the trace colours two thirds of the way to the background, so it reads as
// the same channel but stays behind the live strokes.
constexpr uint32_t RateReference = 0xACAC53;
constexpr uint32_t ErrorReference = 0x53ACAC;
constexpr std::array<uint32_t, 2> Reference = {RateReference, ErrorReference};
} // namespace graph_colour

class GraphRenderer {
public:
    static constexpr double kDefaultUnitsPerPixel = 15.0;
    static constexpr float YDivisions = 10.0f;

    // Both are referenced, not copied; they must outlive the renderer.
    GraphRenderer(const TraceBuffer& traces, GraphCanvas& canvas);

    // Picture units per canvas pixel, for the margins and cursor marks (not pen widths).
    void setUnitsPerPixel(double unitsPerPixel) { unitsPerPixel_ = unitsPerPixel; }

    // Time axis in samples. Nothing is redrawn.
    void PutXAxisMinMax(double min, float max);
    // Stores a range for Y axis 0 or 1 made symmetric about zero, at least -1..1 and as
    // wide as the larger requested magnitude. Another axis is a subscript error.
    void PutYAxisMinMax(double min, float max, int axis);

    // Clears and draws the empty graph: grid, labels, border.
    void InitGraphFull();
    // Geometry, labels and border without clearing, so the previous sweep stays.
    void InitGraphPartial();
    // One segment between samples x0 and x1 of a channel, values held 40 picture units
    // inside the top and bottom edges; erase draws it in the background colour.
    void DrawTraceSegment(double x0, double x1, double y0, double y1, int channel, bool erase);
    // Moves the white cursor marks to 8 samples ahead of x.
    void DrawSweepCursor(double x);
    // A sweep kept for comparison, drawn faintly on the same axes after the grid of every
    // full initialisation, so the live traces draw over it. The spans must stay valid
    // until replaced; empty spans draw nothing. Nothing is redrawn here.
    void setReference(std::span<const float> rate, std::span<const float> error);
    // InitGraphFull, then every valid segment of the buffer.
    void RedrawTraces();
    // With autoScale, ranges from the data (30 % margin, then symmetric); then a redraw.
    void ApplyScale(bool autoScale);
    // -30..30 for the rate, -2..2 for the error; then a redraw.
    void SetDefaultScale();

    double XAxisMin() const { return XAxisMin_; }
    float XAxisMax() const { return XAxisMax_; }
    double YAxisMin(int axis) const { return at(YAxisMin_, axis); }
    float YAxisMax(int axis) const { return at(YAxisMax_, axis); }
    // Extremes of the last automatic scaling pass; empty before the first.
    std::optional<double> AutoMax(int axis) const { return at(AutoMax_, axis); }
    std::optional<double> AutoMin(int axis) const { return at(AutoMin_, axis); }
    float GraphWidth() const { return GraphWidth_; }
    float GraphHeight() const { return GraphHeight_; }
    // The labels as last handed to the canvas.
    const AxisLabels& labels(int axis) const { return at(labels_, axis); }

    // Canvas position of a sample index and of a value on a channel's axis.
    double mapX(double x) const { return (x - XAxisMin_) / (XAxisMax_ - XAxisMin_) * GraphWidth_; }
    double mapY(double y, int axis) const
    {
        const double lo = at(YAxisMin_, axis);
        return GraphHeight_ - (y - lo) / (at(YAxisMax_, axis) - lo) * GraphHeight_;
    }

private:
    void readGeometry();
    bool canDraw() const;
    void drawGrid();
    void updateLabels();
    void drawBorder();
    void drawReference();
    // A segment held inside the top and bottom edges, in the given colour.
    void segment(double x0, double x1, double y0, double y1, int channel, uint32_t colour);
    double units(double pictureUnits) const { return pictureUnits / unitsPerPixel_; }

    const TraceBuffer& traces_;
    GraphCanvas& canvas_;
    double unitsPerPixel_ = kDefaultUnitsPerPixel;

    double XAxisMin_ = 0;
    float XAxisMax_ = 0;
    std::array<double, 2> YAxisMin_{};
    std::array<float, 2> YAxisMax_{};
    float GraphWidth_ = 0;
    float GraphHeight_ = 0;
    float YDivisionHeight_ = 0;
    float SecondWidth_ = 0;
    std::array<std::optional<double>, 2> AutoMax_{};
    std::array<std::optional<double>, 2> AutoMin_{};
    float AutoMargin_ = 0;
    std::array<AxisLabels, 2> labels_{};
    std::array<std::span<const float>, 2> reference_{};
};

} // namespace kdx
