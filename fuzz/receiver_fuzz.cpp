// Bytes from the wire into the receiver, its dispatch, both telemetry decoders and the
// memory handlers, wired as the main window wires them: decoded telemetry becomes live
// captions and a log line, memory contents become the parameter set and its captions.
//
// The input is a script. Each step is a run of raw bytes, a well-formed frame built from
// the input (so the fuzzer gets past the checksum), a watchdog tick or a resync; every
// run of bytes reaches the receiver in chunks whose sizes the input chooses. A consumer
// that raises a host error is abandoned as the event guard abandons a handler.
//
// Checked: a frame sent right after a resync and a watchdog tick is dispatched exactly
// once, whole and as good, whatever came before it; the good and bad counts the main
// window sees match the receiver's.
#include "config/driver_config.h"
#include "config/memory_transfer.h"
#include "config/param_label.h"
#include "core/host_error.h"
#include "link/frame.h"
#include "link/receiver.h"
#include "telemetry/cyclic_telemetry.h"
#include "telemetry/live_captions.h"
#include "telemetry/log_line.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using namespace kdx;

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "receiver_fuzz: %s\n", what);
    std::abort();
}

struct Consumers : MessageSink, LinkLossListener {
    CyclicTelemetry live;
    LiveCaptions captions;
    std::string logLine;
    DriverConfig config;
    std::array<std::string, 2> paramCaptions;
    uint64_t good = 0, bad = 0, dispatched = 0, losses = 0;
    std::vector<int16_t> last; // the last message dispatched, L elements

    void record(const MsgView& m)
    {
        ++dispatched;
        last.clear();
        for (int i = 0; i < m.length(); ++i) last.push_back(m[i]);
    }
    void showTelemetry(const CyclicTelemetry& decoded)
    {
        applyDecoded(live, decoded);
        fillLiveCaptions(live, captions);
        logLine.clear();
        appendTelemetryLogLine(logLine, live);
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
        showTelemetry(decodeCyclicMsg(m));
    }
    void PutCyclicQvaneMsg(const MsgView& m) override
    {
        record(m);
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
    void PutCommsJustWentBad() override { ++losses; }
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
    Consumers sink;
    Receiver rx(&sink, &sink);
    while (in.remaining_bytes() > 0) {
        switch (in.ConsumeIntegralInRange<int>(0, 3)) {
        case 0: // noise, or frames the fuzzer spells out itself
            feed(rx, in, in.ConsumeBytes<uint8_t>(in.ConsumeIntegralInRange<std::size_t>(1, 512)));
            break;
        case 1: { // a well-formed frame
            int id = kIds[in.ConsumeIntegralInRange<std::size_t>(0, kIds.size() - 1)];
            if (id < 0) id = in.ConsumeIntegral<uint8_t>();
            const bool inverted = in.ConsumeBool();
            const bool fresh = in.ConsumeBool();
            const std::vector<uint8_t> payload = in.ConsumeBytes<uint8_t>(in.ConsumeIntegralInRange<std::size_t>(0, 252));
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
            rx.CommsTimeout_Timer();
            break;
        default:
            rx.ResetSync();
            break;
        }
    }
    if (sink.good != rx.goodMessages || sink.bad != rx.badMessages) fail("the message counts disagree");
    return 0;
}
