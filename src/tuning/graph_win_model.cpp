#include "tuning/graph_win_model.h"

#include "core/atomic_file.h"
#include "tuning/sweep_file.h"
#include "tuning/tuning_texts.h"

#include <vector>

namespace kdx {

GraphWinModel::GraphWinModel(GraphCanvas& canvas, GainStore& store, Dialogs& dialogs, const KeyState& keys,
                             const AtomicSaver& saver)
    : dialogs_(dialogs),
      saver_(saver),
      renderer_(traces_, canvas),
      capture_(traces_, renderer_),
      gains_(store, dialogs, keys),
      review_(renderer_)
{
    capture_.Form_Load();
    capture_.setOnSweepEnd([this] {
        const auto n = static_cast<std::size_t>(traces_.SampleIndex) + 1;
        review_.setCurrent(std::span(traces_.RateTrace).first(n), std::span(traces_.ErrorTrace).first(n),
                           gains_.values());
    });
}

void GraphWinModel::PutSample(int32_t Motor, double RateValue, float ErrorValue)
{
    capture_.PutSample(Motor, RateValue, ErrorValue);
}

void GraphWinModel::PutCommsJustWentBad(bool mainDataModified)
{
    if (!mainDataModified && !gains_.GetDataModified()) return;
    dialogs_.MsgBox(std::string(tuning_text::DisconnectedText), box::Critical,
                    std::string(tuning_text::DisconnectedTitle));
}

void GraphWinModel::MotorSelcb_Click(int index)
{
    if (gains_.MotorSelcb_Click(index)) capture_.setSelectedMotor(gains_.MotorIndex());
}

FileDialogRequest GraphWinModel::traceFileRequest()
{
    FileDialogRequest r;
    r.filter = std::string(tuning_text::FileFilter);
    r.filterIndex = 1;
    r.defaultExt = std::string(tuning_text::FileDefaultExt);
    return r;
}

std::string GraphWinModel::traceFileText() const
{
    return tuningFileText(traces_, traces_.lastCapturedIndex(capture_.SweepStartPending()), gains_.values());
}

void GraphWinModel::SaveTracecb_Click()
{
    const std::optional<std::string> path = dialogs_.SaveFile(traceFileRequest());
    if (!path || path->empty()) return;
    SaveTraceFile(*path);
}

bool GraphWinModel::SaveTraceFile(const std::string& path)
{
    const std::string text = traceFileText();
    std::string error;
    const auto* data = reinterpret_cast<const uint8_t*>(text.data());
    if (saver_.save(path, std::span<const uint8_t>(data, text.size()), error)) return true;
    dialogs_.MsgBox(std::string(tuning_text::WriteErrorText) + error, box::OkOnly,
                    std::string(tuning_text::WriteErrorTitle));
    return false;
}

void GraphWinModel::LoadTracecb_Click()
{
    const std::optional<std::string> path = dialogs_.OpenFile(traceFileRequest());
    if (!path || path->empty()) return;
    LoadTraceFile(*path);
}

bool GraphWinModel::LoadTraceFile(const std::string& path)
{
    std::vector<uint8_t> bytes;
    std::optional<std::string> error = readTuningFileBytes(path, bytes);
    if (!error && !LoadTraceBytes(bytes).headerRead) error = tuningFileReadError(path, tuning_file::NoTuningData);
    if (!error) return true;
    dialogs_.MsgBox(*error, box::OkOnly, std::string(tuning_file::ReadErrorTitle));
    return false;
}

TuningFileLoad GraphWinModel::LoadTraceBytes(std::span<const uint8_t> bytes)
{
    const TuningFileLoad r = readTuningFile(bytes, traces_, [this] { capture_.StopForLoad(); });
    if (!r.headerRead) return r;
    if (r.gains) gains_.StoreMemory(0, *r.gains);
    capture_.ShowLoaded(r.lastIndex());
    gains_.RefreshDisplay();
    // Measured from every line of the file, as kdxctl analyse reads it; a file only the
    // lenient loader takes is measured from what it shows.
    auto file = readSweepFile(bytes, 0);
    if (auto* f = std::get_if<SweepFile>(&file)) {
        review_.setCurrent(f->rate, f->error, f->gains.value_or(gains_.values()));
    } else {
        const auto n = static_cast<std::size_t>(r.lastIndex()) + 1;
        review_.setCurrent(std::span(traces_.RateTrace).first(n), std::span(traces_.ErrorTrace).first(n),
                           r.gains.value_or(gains_.values()));
    }
    return r;
}

} // namespace kdx
