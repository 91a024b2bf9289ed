#include "tuning/graph_renderer.h"

#include "core/host_numeric.h"

#include <algorithm>
#include <cmath>

namespace kdx {

namespace {

// Picture units (1/15 pixel as designed).
constexpr double kEdgeMargin = 40;  // traces run this far inside the top and bottom
constexpr double kCursorInner = 80; // cursor marks span ym +- 80 .. 200
constexpr double kCursorOuter = 200;
constexpr double kBorderInset = 2; // border starts this far in from left and top

// Pen widths in pixels.
constexpr double kThinPen = 1;
constexpr double kBorderPen = 4;
constexpr double kCursorErasePen = 5; // wider than the cursor so it wipes it completely
constexpr double kCursorPen = 2;

// Sample units.
constexpr double kCursorLead = 6; // the old cursor position ahead of the newest point
constexpr double kCursorStep = 2; // the new one, 8 samples ahead

// The automatic pass starts the minimum at this value and the maximum at 0, so the
// maximum is never negative; the range is made symmetric afterwards anyway.
constexpr double kAutoMinStart = 9999999;
constexpr double kAutoMarginFactor = 0.3;

// Labels switch from "0.0" to "0" once the automatic maximum reaches this.
constexpr double kWholeLabelThreshold = 5;

} // namespace

GraphRenderer::GraphRenderer(const TraceBuffer& traces, GraphCanvas& canvas) : traces_(traces), canvas_(canvas) {}

void GraphRenderer::PutXAxisMinMax(double min, float max)
{
    XAxisMin_ = min;
    XAxisMax_ = max;
}

void GraphRenderer::PutYAxisMinMax(double min, float max, int axis)
{
    double& storedMin = at(YAxisMin_, axis);
    float& storedMax = at(YAxisMax_, axis);
    if (max < 1.0f) max = 1.0f;
    if (min > -1) min = -1;
    // The maximum is kept as a 32-bit float; the minimum is its exact negative, so that
    // the middle label is exactly zero and never reads "-0.0".
    if (!(std::fabs(min) < max)) max = toSingle(-min);
    min = -static_cast<double>(max);
    storedMin = min;
    storedMax = max;
}

void GraphRenderer::readGeometry()
{
    GraphWidth_ = toSingle(canvas_.width());
    GraphHeight_ = toSingle(canvas_.height());
    YDivisionHeight_ = GraphHeight_ / YDivisions;
}

bool GraphRenderer::canDraw() const
{
    // A minimised window has no area; a time axis without length cannot be mapped.
    return GraphWidth_ > 0 && GraphHeight_ > 0 && XAxisMax_ > XAxisMin_;
}

void GraphRenderer::InitGraphFull()
{
    readGeometry();
    if (!canDraw()) return;
    canvas_.clear(graph_colour::Background);
    drawGrid();
    drawReference();
    updateLabels();
    drawBorder();
}

void GraphRenderer::InitGraphPartial()
{
    readGeometry();
    if (!canDraw()) return;
    updateLabels();
    drawBorder();
}

void GraphRenderer::drawGrid()
{
    const double w = GraphWidth_, h = GraphHeight_;
    const int zeroLine = static_cast<int>(Int(YDivisions / 2));
    for (int i = 1; i <= static_cast<int>(YDivisions); ++i) {
        const double y = i * static_cast<double>(YDivisionHeight_);
        canvas_.line(0, y, w, y, i == zeroLine ? graph_colour::GridBright : graph_colour::Grid, kThinPen);
    }
    // One vertical line per labelled second, the middle one bright.
    const float seconds = traces_.TraceSeconds;
    if (!(seconds > 0)) return;
    SecondWidth_ = GraphWidth_ / seconds;
    const int lines = CInt(seconds);
    const int middle = static_cast<int>(Int(seconds / 2));
    for (int i = 1; i <= lines; ++i) {
        const double x = i * static_cast<double>(SecondWidth_);
        canvas_.line(x, 0, x, h, i == middle ? graph_colour::GridBright : graph_colour::Grid, kThinPen);
    }
}

void GraphRenderer::updateLabels()
{
    const int divisions = static_cast<int>(YDivisions);
    for (int axis = 0; axis < 2; ++axis) {
        const double lo = YAxisMin_[axis], hi = YAxisMax_[axis];
        const auto& autoMax = AutoMax_[axis];
        const char* pattern = autoMax && *autoMax >= kWholeLabelThreshold ? "0" : "0.0";
        AxisLabels& out = labels_[axis];
        for (int i = 1; i < divisions; ++i) {
            out[i - 1].y = i * static_cast<double>(YDivisionHeight_);
            out[i - 1].text = Format(lo + (hi - lo) * (divisions - i) / 10, pattern);
        }
        canvas_.axisLabels(axis, out);
    }
}

void GraphRenderer::drawBorder()
{
    const double in = units(kBorderInset), w = GraphWidth_, h = GraphHeight_;
    const uint32_t c = graph_colour::GridBright;
    canvas_.line(in, in, w, in, c, kBorderPen);
    canvas_.line(w, in, w, h, c, kBorderPen);
    canvas_.line(w, h, in, h, c, kBorderPen);
    canvas_.line(in, h, in, in, c, kBorderPen);
}

void GraphRenderer::DrawTraceSegment(double x0, double x1, double y0, double y1, int channel, bool erase)
{
    const uint32_t traceColour = at(graph_colour::Trace, channel);
    segment(x0, x1, y0, y1, channel, erase ? graph_colour::Background : traceColour);
}

void GraphRenderer::segment(double x0, double x1, double y0, double y1, int channel, uint32_t colour)
{
    if (!canDraw()) return;
    if (!(x0 >= XAxisMin_ && x1 <= XAxisMax_)) return;
    // A trace that leaves the range runs along the edge instead of vanishing.
    const double lo = YAxisMin_[channel], hi = YAxisMax_[channel];
    const double margin = (hi - lo) * units(kEdgeMargin) / GraphHeight_;
    const double bottom = lo + margin, top = hi - margin;
    if (y0 < bottom) y0 = bottom;
    else if (y0 > top) y0 = top;
    if (y1 < bottom) y1 = bottom;
    else if (y1 > top) y1 = top;
    canvas_.line(mapX(x0), mapY(y0, channel), mapX(x1), mapY(y1, channel), colour, kThinPen);
}

void GraphRenderer::setReference(std::span<const float> rate, std::span<const float> error)
{
    reference_ = {rate, error};
}

void GraphRenderer::drawReference()
{
    for (int c = 0; c < 2; ++c) {
        const std::span<const float> v = reference_[c];
        const long long last = std::min<long long>(static_cast<long long>(v.size()) - 1, CInt(XAxisMax_));
        for (long long i = std::max<long long>(1, CLng(XAxisMin_) + 1); i <= last; ++i)
            segment(static_cast<double>(i - 1), static_cast<double>(i), v[i - 1], v[i], c, graph_colour::Reference[c]);
    }
}

void GraphRenderer::DrawSweepCursor(double x)
{
    if (!canDraw()) return;
    const double xa = x + kCursorLead, xb = xa + kCursorStep;
    if (!(xa >= XAxisMin_ && xb <= XAxisMax_)) return;
    const double ym = GraphHeight_ / 2.0;
    const double inner = units(kCursorInner), outer = units(kCursorOuter);
    const double pa = mapX(xa), pb = mapX(xb);
    canvas_.line(pa, ym - outer, pa, ym - inner, graph_colour::Background, kCursorErasePen);
    canvas_.line(pa, ym + inner, pa, ym + outer, graph_colour::Background, kCursorErasePen);
    // On a narrow graph of a long sweep several samples share a pixel, and the wide
    // erase stroke reaches back over the newest points of this sweep: draw them again.
    // (The segment ending at x is drawn by the caller after this.)
    const double reach = pa - kCursorErasePen / 2 - kThinPen;
    const Trace& rate = traces_.RateTrace;
    const Trace& error = traces_.ErrorTrace;
    for (long long k = CLng(x) - 1; k > CLng(XAxisMin_) && mapX(static_cast<double>(k)) >= reach; --k) {
        const double x0 = static_cast<double>(k - 1), x1 = static_cast<double>(k);
        DrawTraceSegment(x0, x1, at(rate, k - 1), at(rate, k), 0, false);
        DrawTraceSegment(x0, x1, at(error, k - 1), at(error, k), 1, false);
    }
    canvas_.line(pb, ym - outer, pb, ym - inner, graph_colour::Cursor, kCursorPen);
    canvas_.line(pb, ym + inner, pb, ym + outer, graph_colour::Cursor, kCursorPen);
}

void GraphRenderer::RedrawTraces()
{
    InitGraphFull();
    if (!canDraw()) return;
    long long last = CInt(XAxisMax_);
    // While a cleared sweep grows, only the part recorded so far is valid.
    if (traces_.DisplayClear && traces_.Capturing) last = traces_.SampleIndex - 1;
    last = std::min<long long>(last, traces_.ValidEnd);
    const Trace& rate = traces_.RateTrace;
    const Trace& error = traces_.ErrorTrace;
    for (long long i = CLng(XAxisMin_) + 1; i <= last; ++i) {
        const double x0 = static_cast<double>(i - 1), x1 = static_cast<double>(i);
        DrawTraceSegment(x0, x1, at(rate, i - 1), at(rate, i), 0, false);
        DrawTraceSegment(x0, x1, at(error, i - 1), at(error, i), 1, false);
    }
}

void GraphRenderer::ApplyScale(bool autoScale)
{
    if (!autoScale) {
        RedrawTraces();
        return;
    }
    std::array<double, 2> lo = {kAutoMinStart, kAutoMinStart};
    std::array<double, 2> hi = {0, 0};
    const long long last =
        std::min<long long>(traces_.Capturing ? traces_.SampleIndex - 1 : CInt(XAxisMax_), traces_.ValidEnd);
    for (long long i = CLng(XAxisMin_); i <= last; ++i) {
        for (int c = 0; c < 2; ++c) {
            const double v = at(traces_.trace(c), i);
            // Kept as designed: a value that lowers the minimum is not considered for
            // the maximum.
            if (v < lo[c]) lo[c] = v;
            else if (v > hi[c]) hi[c] = v;
        }
    }
    for (int c = 0; c < 2; ++c) {
        AutoMin_[c] = lo[c];
        AutoMax_[c] = hi[c];
        AutoMargin_ = toSingle(kAutoMarginFactor * (hi[c] - lo[c]) / 2);
        PutYAxisMinMax(lo[c] - AutoMargin_, toSingle(hi[c] + AutoMargin_), c);
    }
    RedrawTraces();
}

void GraphRenderer::SetDefaultScale()
{
    PutYAxisMinMax(0, 30.0f, 0);
    PutYAxisMinMax(0, 2.0f, 1);
    RedrawTraces();
}

} // namespace kdx
