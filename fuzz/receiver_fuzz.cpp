// Bytes from the wire into the receiver, its dispatch, both telemetry decoders and the
// memory handlers, wired as the main window wires them: decoded telemetry becomes live
// captions, the debug display's captions, two samples (one through a Q-Vane) for the
// tuning window's capture and graph, and a line in a telemetry log written to disk;
// memory contents become the parameter set and its captions. The target mode follows
// the messages, which shows or hides the second motor's button in the tuning window.
//
// The input is a script. Each step is a run of raw bytes, a well-formed frame built from
// the input (so the fuzzer gets past the checksum), a watchdog tick (half a second on
// the log's clock), a resync, or something the user does meanwhile: start, pause or
// stop the log, ask for the debug columns, select a motor in the tuning window, or press
// one of its capture buttons. Every run of bytes reaches the receiver in chunks whose
// sizes the input chooses. A consumer that raises a host error is abandoned as the event
// guard abandons a handler.
//
// Checked: a frame sent right after a resync and a watchdog tick is dispatched exactly
// once, whole and as good, whatever came before it; the good and bad counts the main
// window sees match the receiver's; a message that decodes is shown, sampled and logged
// without a fault; every log line has the columns its mode's header names; the log file
// holds exactly the header and the lines written while it ran; every line the graph
// draws has finite coordinates.
#include "config/driver_config.h"
#include "config/memory_transfer.h"
#include "config/param_label.h"
#include "core/host_error.h"
#include "fuzz_support.h"
#include "link/frame.h"
#include "link/receiver.h"
#include "telemetry/cyclic_telemetry.h"
#include "telemetry/debug_bytes.h"
#include "telemetry/live_captions.h"
#include "telemetry/log_line.h"
#include "telemetry/log_writer.h"
#include "tuning/graph_win_model.h"
#include "tuning/standalone_context.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace kdx;

[[noreturn]] void fail(const char* what) { fuzz::fail("receiver", what); }

std::size_t columns(std::string_view line)
{
    return static_cast<std::size_t>(std::count(line.begin(), line.end(), ',')) + 1;
}

template <typename F>
void guarded(F&& handler)
{
    try {
        handler();
    } catch (const HostError&) {
    }
}

struct Consumers : MessageSink, LinkLossListener {
    CyclicTelemetry live;
    LiveCaptions captions;
    std::array<std::string, kDebugByteCount> debugCaptions;
    DriverConfig config;
    std::array<std::string, 2> paramCaptions;
    uint64_t good = 0, bad = 0, dispatched = 0, losses = 0;
    std::vector<int16_t> last; // the last message dispatched, L elements

    // The tuning window, with the main window's gains for both motors.
    fuzz::CheckingCanvas canvas{"receiver"};
    FixedGainStore gains{GainSet{100, 20, 2, 50, 15, 40, 100}, true};
    FixedAnswerDialogs dialogs{Answer::No};
    NoShiftKey keys;
    GraphWinModel graph{canvas, gains, dialogs, keys};
    bool targetIsQVane = false;
    bool secondMotorButton = true; // the tuning window's MotorSelcb(1) is shown

    // The log, on a clock the watchdog ticks advance.
    struct : Clock {
        double seconds = 0;
        int64_t nowNs() override { return static_cast<int64_t>(seconds * 1e9); }
    } clock;
    LogWriter log{clock};
    bool logDebug = false; // the debug display asks for its columns in the log
    std::string expectedLog;
    int32_t expectedLines = 0;
    std::string line, debugValues;
    const std::string logPath = fuzz::scratchDir() + "/Run1.csv";

    void record(const MsgView& m)
    {
        ++dispatched;
        last.clear();
        for (int i = 0; i < m.length(); ++i) last.push_back(m[i]);
    }
    std::optional<std::string> debugTitlesIfLogged() const
    {
        return logDebug ? std::optional<std::string>(debugTitles()) : std::nullopt;
    }
    void writeLogLine()
    {
        if (!log.GetLoggingDataToFile()) return;
        line.clear();
        if (logDebug) {
            debugValues.clear();
            appendDebugValues(debugValues, live.debug);
            appendTelemetryLogLine(line, live, debugValues);
        } else {
            appendTelemetryLogLine(line, live);
        }
        if (columns(line) != columns(telemetryFileTitles(live.TargetIsQVane, debugTitlesIfLogged())))
            fail("a log line does not have the columns its header names");
        switch (log.PutStringToLog(line)) {
        case LogWriter::PutResult::NotWritten: break;
        case LogWriter::PutResult::WriteFailed: fail("the log could not be written");
        default: expectedLog += line; ++expectedLines;
        }
    }
    // What follows a decoded message: a fault here loses a sample, a caption or a line.
    void showTelemetry(const CyclicTelemetry& decoded)
    {
        applyDecoded(live, decoded);
        try {
            if (!live.TargetIsQVane)
                for (std::size_t i = 0; i < kDebugByteCount; ++i) debugCaptions[i] = debugValueCaption(live.debug[i]);
            graph.PutSample(0, live.motor[0].AxisRate, live.motor[0].AxisError);
            if (!live.TargetIsQVane) graph.PutSample(1, live.motor[1].AxisRate, live.motor[1].AxisError);
            fillLiveCaptions(live, captions);
            writeLogLine();
        } catch (const HostError&) {
            fail("a decoded cyclic message abandoned the display, the graph or the log");
        }
    }
    void setTargetIsQVane(bool qvane)
    {
        targetIsQVane = qvane;
        secondMotorButton = !qvane; // a Q-Vane reports one axis at a time
    }
    void showConfiguration()
    {
        config.acceptNewImage();
        for (int m = 0; m < 2; ++m)
            for (ParamLabel l : kRefreshOrder) paramCaptions[static_cast<std::size_t>(m)] = config.caption(l, m);
    }

    void PutCyclicMsg(const MsgView& m) override
    {
        record(m);
        setTargetIsQVane(false);
        showTelemetry(decodeCyclicMsg(m));
    }
    void PutCyclicQvaneMsg(const MsgView& m) override
    {
        record(m);
        setTargetIsQVane(true);
        showTelemetry(decodeCyclicQvaneMsg(m));
    }
    void PutMemoryMsg(const MsgView& m) override
    {
        record(m);
        kdx::PutMemoryMsg(config.image(), m);
        showConfiguration();
    }
    void PutAxisMemoryMsg(const MsgView& m) override
    {
        record(m);
        kdx::PutAxisMemoryMsg(config.image(), m);
        showConfiguration();
    }
    void PutMessageReceived(bool ok) override { ok ? ++good : ++bad; }
    void PutCommsJustWentBad() override
    {
        ++losses;
        graph.PutCommsJustWentBad(false);
    }

    void startLog()
    {
        const bool fresh = !log.GetLoggingDataToFile();
        const std::string header = telemetryFileTitles(targetIsQVane, debugTitlesIfLogged());
        if (log.Start(logPath, header)) fail("the log could not be started");
        if (!fresh) return; // Start resumes a paused log
        expectedLog = header;
        expectedLines = 0;
    }
    void stopLog()
    {
        if (!log.GetLoggingDataToFile()) return;
        if (log.LinesLogged() != expectedLines) fail("the line count differs from the lines written");
        if (!log.Stop()) fail("the log could not be closed");
        if (fuzz::readScratchFile(logPath) != expectedLog) fail("the log file differs from the lines written");
    }

    // Something the user does between messages; a host error abandons it.
    void userAction(FuzzedDataProvider& in)
    {
        TraceCapture& capture = graph.capture();
        guarded([&] {
            switch (in.ConsumeIntegralInRange<int>(0, 11)) {
            case 0: startLog(); break;
            case 1:
                if (!log.Pause()) fail("the log could not be written");
                break;
            case 2: stopLog(); break;
            case 3: logDebug = !logDebug; break;
            case 4: graph.MotorSelcb_Click(secondMotorButton ? in.ConsumeIntegralInRange<int>(0, 1) : 0); break;
            case 5: capture.RepeatTrigcb_Click(); break;
            case 6: capture.NowTrigcb_Click(); break;
            case 7: capture.StopTracecb_Click(); break;
            case 8: capture.TraceDurationcb_Click(in.ConsumeIntegralInRange<int>(0, 3)); break;
            case 9: capture.DisplayClearcb_Click(); break;
            case 10: capture.AutoScalecb_Click(); break;
            default: capture.DefaultScalecb_Click(); break;
            }
        });
    }
};

// The identifiers worth aiming at; the last entry lets the input pick any byte.
constexpr std::array<int, 7> kIds = {121, 122, 120, 136, 137, 138, -1};

void feed(Receiver& rx, FuzzedDataProvider& in, const std::vector<uint8_t>& bytes)
{
    std::size_t at = 0;
    while (at < bytes.size()) {
        const std::size_t n = std::min<std::size_t>(bytes.size() - at, in.ConsumeIntegralInRange<std::size_t>(1, 300));
        rx.receiveBytes(std::span<const uint8_t>(bytes.data() + at, n));
        at += n;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    FuzzedDataProvider in(data, size);
    const auto consumers = std::make_unique<Consumers>(); // a fresh program for every input
    Consumers& sink = *consumers;
    Receiver rx(&sink, &sink);
    while (in.remaining_bytes() > 0) {
        switch (in.ConsumeIntegralInRange<int>(0, 4)) {
        case 0: // noise, or frames the fuzzer spells out itself
            feed(rx, in, in.ConsumeBytes<uint8_t>(in.ConsumeIntegralInRange<std::size_t>(1, 512)));
            break;
        case 1: { // a well-formed frame
            int id = kIds[in.ConsumeIntegralInRange<std::size_t>(0, kIds.size() - 1)];
            if (id < 0) id = in.ConsumeIntegral<uint8_t>();
            const bool inverted = in.ConsumeBool();
            const bool fresh = in.ConsumeBool();
            const std::vector<uint8_t> payload =
                in.ConsumeBytes<uint8_t>(in.ConsumeIntegralInRange<std::size_t>(0, 252));
            const std::vector<uint8_t> frame = buildFrame(id, payload, inverted);
            if (fresh) {
                rx.ResetSync();
                rx.CommsTimeout_Timer(); // also clears a guard a faulted consumer left set
            }
            const uint64_t goodBefore = rx.goodMessages, dispatchedBefore = sink.dispatched;
            feed(rx, in, frame);
            if (fresh) {
                if (rx.goodMessages != goodBefore + 1) fail("a well-formed frame after a resync was not accepted");
                const bool consumed = id == 121 || id == 122 || id == 120 || (id >= 136 && id <= 138);
                if (consumed) {
                    if (sink.dispatched != dispatchedBefore + 1) fail("a well-formed frame was not dispatched once");
                    if (sink.last.size() != frame.size() - 1) fail("the dispatched message has the wrong length");
                    for (std::size_t i = 0; i < sink.last.size(); ++i)
                        if (sink.last[i] != frame[i + 1]) fail("the dispatched message differs from the frame");
                }
            }
            break;
        }
        case 2:
            sink.clock.seconds += 0.5;
            rx.CommsTimeout_Timer();
            if (!sink.log.flushIfDue()) fail("the log could not be written");
            break;
        case 3: rx.ResetSync(); break;
        default: sink.userAction(in); break;
        }
    }
    if (sink.good != rx.goodMessages || sink.bad != rx.badMessages) fail("the message counts disagree");
    sink.stopLog();
    return 0;
}
