#pragma once
// A canvas that records what is drawn, and a main window's gain store held in arrays.
#include "tuning/gain_store.h"
#include "tuning/graph_canvas.h"
#include "tuning/graph_win_model.h"
#include "fakes/scripted_dialogs.h"

#include <array>
#include <memory>
#include <vector>

namespace kdx::test {

struct Line {
    double x0, y0, x1, y1;
    uint32_t colour;
    double pen;
};

class RecordingCanvas : public GraphCanvas {
public:
    double w = 1200, h = 600;
    std::vector<Line> lines;
    int clears = 0;
    std::array<AxisLabels, 2> labels{};
    int labelCalls = 0;

    double width() const override { return w; }
    double height() const override { return h; }
    void clear(uint32_t) override { ++clears; }
    void line(double x0, double y0, double x1, double y1, uint32_t c, double pen) override
    {
        lines.push_back({x0, y0, x1, y1, c, pen});
    }
    void axisLabels(int axis, const AxisLabels& l) override { labels.at(axis) = l, ++labelCalls; }

    std::vector<Line> withColour(uint32_t c) const
    {
        std::vector<Line> out;
        for (const Line& l : lines)
            if (l.colour == c) out.push_back(l);
        return out;
    }
};

class FakeGainStore : public GainStore {
public:
    std::array<GainSet, 2> stored{};
    bool loaded = true;

    float GetP(int m) const override { return stored.at(m).P; }
    float GetI(int m) const override { return stored.at(m).I; }
    float GetIA(int m) const override { return stored.at(m).IA; }
    float GetD(int m) const override { return stored.at(m).D; }
    float GetV1(int m) const override { return stored.at(m).V1; }
    float GetV2(int m) const override { return stored.at(m).V2; }
    float GetG(int m) const override { return stored.at(m).G; }
    void PutP(float v, int m) override { put(Gain::P, v, m); }
    void PutI(float v, int m) override { put(Gain::I, v, m); }
    void PutIA(float v, int m) override { put(Gain::IA, v, m); }
    void PutD(float v, int m) override { put(Gain::D, v, m); }
    void PutV1(float v, int m) override { put(Gain::V1, v, m); }
    void PutV2(float v, int m) override { put(Gain::V2, v, m); }
    void PutG(float v, int m) override { put(Gain::G, v, m); }
    bool GetGainsHaveBeenLoaded() const override { return loaded; }
    bool GetDataModified() const override { return false; }

private:
    void put(Gain g, float v, int m) { stored.at(m)[g] = v; }
};

// A tuning window's model with all its fakes.
struct Rig {
    RecordingCanvas canvas;
    FakeGainStore store;
    ScriptedDialogs dialogs;
    FakeKeyState keys;
    std::unique_ptr<GraphWinModel> model = std::make_unique<GraphWinModel>(canvas, store, dialogs, keys);
    TraceBuffer& t() { return model->traces(); }
    TraceCapture& cap() { return model->capture(); }
    GraphRenderer& gr() { return model->renderer(); }
    GainPanel& gains() { return model->gains(); }
};

} // namespace kdx::test
