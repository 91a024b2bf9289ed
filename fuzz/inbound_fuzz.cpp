// The simulated module's side of the link: bytes from the tool into its inbound parser
// and protocol endpoint (a KDX wired directly, or a Q-Vane relaying three KDX axes), the
// physical model running between them, and everything the module sends back through
// the tool's own receiver and decoders.
//
// The first input byte chooses the role. The rest is a script: a run of raw bytes, a
// well-formed frame of a message the tool sends (direct or relayed, with a payload of
// the input's choosing, so the fuzzer gets past the checksum), or some milliseconds of
// the module's time.
//
// Checked: the parser takes a well-formed frame whole right after a reset, and takes
// nothing whose plain checksum is wrong; every byte the module sends arrives as a good
// frame, never as noise; its telemetry decodes; every memory reply holds what the
// module was last told to store (the factory image until a write).
#include "config/memory_layout.h"
#include "core/host_error.h"
#include "fuzz_support.h"
#include "link/frame.h"
#include "link/message_ids.h"
#include "link/receiver.h"
#include "sim/inbound_parser.h"
#include "sim/module_endpoint.h"
#include "sim/motor_config.h"
#include "telemetry/cyclic_telemetry.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <vector>

namespace {

using namespace kdx;
using sim::MotorBlock;

[[noreturn]] void fail(const char* what) { fuzz::fail("inbound", what); }

constexpr int kAxes = 3;

// What the module sends, as the tool receives it; memory replies are compared with
// what the module should hold.
struct ToolSide : MessageSink {
    bool qvane = false;
    std::array<MotorBlock, kAxes> memory{};

    void PutCyclicMsg(const MsgView& m) override { decodes(m, false); }
    void PutCyclicQvaneMsg(const MsgView& m) override { decodes(m, true); }
    void PutMemoryMsg(const MsgView& m) override
    {
        if (qvane) fail("a KDX memory reply from a Q-Vane");
        if (m.length() != layout::DirectBytes + 3) fail("a memory reply of the wrong length");
        for (int i = 0; i < layout::DirectBytes; ++i)
            if (m[i + 2] != memory[static_cast<std::size_t>(i / layout::MotorBlockSize)]
                                  [static_cast<std::size_t>(i % layout::MotorBlockSize)])
                fail("a memory reply differs from what the module was told to store");
    }
    void PutAxisMemoryMsg(const MsgView& m) override
    {
        if (!qvane) fail("a relayed memory reply from a KDX");
        if (m.length() != layout::RelayedBytes + 5) fail("a relayed memory reply of the wrong length");
        const auto& block = memory[static_cast<std::size_t>(m.id() - msg::AxisMemoryBase)];
        for (int i = 0; i < layout::RelayedBytes; ++i)
            if (m[i + 2] != block[static_cast<std::size_t>(i)])
                fail("a memory reply differs from what the module was told to store");
    }
    void PutMessageReceived(bool good) override
    {
        if (!good) fail("the module sent a frame with a bad checksum");
    }

    void decodes(const MsgView& m, bool relayed)
    {
        if (relayed != qvane) fail("telemetry of the other kind of module");
        try {
            (void)(relayed ? decodeCyclicQvaneMsg(m) : decodeCyclicMsg(m));
        } catch (const HostError&) {
            fail("the module's telemetry does not decode");
        }
    }
};

// A message the tool may send, ready for the payload.
std::vector<uint8_t> messageHead(FuzzedDataProvider& in, int& id)
{
    switch (in.ConsumeIntegralInRange<int>(0, 8)) {
    case 0: id = msg::ReadMemory; return {};
    case 1: id = msg::WriteMemory; return {};
    case 2: id = msg::Gains; return {};
    case 3: id = msg::TestDrive; return {};
    case 4: id = msg::TuningDrive; return {};
    case 5: id = msg::Bootloader; return {};
    case 6: id = msg::SelectAxisBase + in.ConsumeIntegralInRange<int>(0, kAxes - 1); return {};
    case 7: // relayed: read, write, or a gain, test or tuning-drive message
        id = msg::RelayMarker;
        return {in.PickValueInArray<uint8_t>(
            {msg::RelayedReadBase, msg::RelayedReadBase + 1, msg::RelayedReadBase + 2, msg::RelayedWriteBase,
             msg::RelayedWriteBase + 1, msg::RelayedWriteBase + 2, msg::Gains, msg::TestDrive, msg::TuningDrive})};
    default: id = in.ConsumeIntegral<uint8_t>(); return {};
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    FuzzedDataProvider in(data, size);
    const bool qvane = in.ConsumeBool();
    sim::ModuleEndpoint module(qvane ? sim::Role::QVane : sim::Role::Kdx, 7);
    ToolSide tool;
    tool.qvane = qvane;
    for (int i = 0; i < kAxes; ++i) tool.memory[static_cast<std::size_t>(i)] = sim::defaultMotorBlock(i);
    Receiver rx(&tool);

    // The module's parser, fed alike, says which frames the module took. Bytes go in one
    // at a time, as a serial line delivers them, so every reply is checked against the
    // memory as it was when the reply was made.
    sim::InboundParser mirror;
    std::vector<uint8_t> out;
    auto feed = [&](const std::vector<uint8_t>& bytes) {
        for (uint8_t b : bytes) {
            if (!module.inBootloader() && mirror.push(b)) {
                const auto m = mirror.message();
                const std::size_t payload = m.size() - 3;
                if (m[1] == msg::Bootloader && payload == 0) mirror.reset();
                if (!qvane && m[1] == msg::WriteMemory && payload == layout::DirectBytes) {
                    std::copy_n(m.begin() + 2, layout::MotorBlockSize, tool.memory[0].begin());
                    std::copy_n(m.begin() + 2 + layout::MotorBlockSize, layout::MotorBlockSize, tool.memory[1].begin());
                }
                if (qvane && m[1] == msg::RelayMarker && payload == layout::RelayedBytes + 1 &&
                    m[2] >= msg::RelayedWriteBase && m[2] < msg::RelayedWriteBase + kAxes)
                    std::copy_n(m.begin() + 3, layout::RelayedBytes,
                                tool.memory[static_cast<std::size_t>(m[2] - msg::RelayedWriteBase)].begin());
            }
            module.receive(std::span<const uint8_t>(&b, 1));
            out.clear();
            module.flushReplies(out);
            rx.receiveBytes(out);
        }
    };

    while (in.remaining_bytes() > 0) {
        switch (in.ConsumeIntegralInRange<int>(0, 2)) {
        case 0: feed(in.ConsumeBytes<uint8_t>(in.ConsumeIntegralInRange<std::size_t>(1, 300))); break;
        case 1: { // a well-formed frame; after a reset the parser must take it whole
            int id = 0;
            std::vector<uint8_t> payload = messageHead(in, id);
            const std::vector<uint8_t> rest = in.ConsumeBytes<uint8_t>(in.ConsumeIntegralInRange<std::size_t>(0, 80));
            payload.insert(payload.end(), rest.begin(), rest.end());
            const std::vector<uint8_t> frame = buildFrame(id, payload, false);
            sim::InboundParser fresh;
            for (std::size_t i = 0; i < frame.size(); ++i)
                if (fresh.push(frame[i]) != (i + 1 == frame.size()))
                    fail("a well-formed frame was not taken at its last byte");
            if (!std::equal(frame.begin() + 1, frame.end(), fresh.message().begin(), fresh.message().end()))
                fail("the frame taken differs from the frame sent");
            std::vector<uint8_t> broken = frame;
            broken.back() = static_cast<uint8_t>(~broken.back()); // the tool never sends the inverted sum
            fresh.reset();
            for (uint8_t b : broken)
                if (fresh.push(b)) fail("a frame with a wrong checksum was taken");
            feed(frame);
            break;
        }
        default: { // the module's time
            const int ms = in.ConsumeIntegralInRange<int>(1, 200);
            out.clear();
            for (int t = 0; t < ms; ++t) module.tick(out);
            rx.receiveBytes(out);
            break;
        }
        }
    }
    if (rx.CommsErrorCount != 0) fail("the module sent bytes outside frames");
    return 0;
}
