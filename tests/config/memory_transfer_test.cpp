#include "config/memory_transfer.h"
#include "core/host_error.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

using namespace kdx;

namespace {

// Element lists: literal values, and runs of `n` elements counting up from `from`.
std::vector<int> seq(std::initializer_list<std::vector<int>> parts)
{
    std::vector<int> all;
    for (const auto& p : parts) all.insert(all.end(), p.begin(), p.end());
    return all;
}
std::vector<int> run(int n, int from)
{
    std::vector<int> v(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) v[static_cast<std::size_t>(i)] = from ? from + i : 0;
    return v;
}

} // namespace

TEST(MemoryTransfer, RequestAndWriteMessages)
{
    MemoryImage zero{}, odd{};
    for (int i = 0; i < 65; ++i) odd[static_cast<std::size_t>(i)] = static_cast<int16_t>(i + 1);
    odd[14] = 256; // unmasked: its low byte travels and the checksum still works
    const std::pair<std::function<void(OutMsgBuffer&)>, std::vector<int>> cases[] = {
        {[](OutMsgBuffer& o) { buildReadRequest(o, false, 2); }, {3, 112, 115}},
        {[](OutMsgBuffer& o) { buildReadRequest(o, true, 2); }, {4, 130, 130, 8}},
        {[&](OutMsgBuffer& o) { buildWriteMessage(o, zero, false, 0); }, seq({{63, 113}, run(60, 0), {176}})},
        {[&](OutMsgBuffer& o) { buildWriteMessage(o, zero, true, 1); }, seq({{34, 130, 132}, run(30, 0), {40}})},
        // 176 + (1 + ... + 60) - 15 + 256 = 2247 -> 199; elements 60 .. 64 stay home
        {[&](OutMsgBuffer& o) { buildWriteMessage(o, odd, false, 0); },
         seq({{63, 113}, run(14, 1), {256}, run(45, 16), {199}})},
        // 34 + 130 + 133 + (1 + ... + 30) - 15 + 256 = 1003 -> 235
        {[&](OutMsgBuffer& o) { buildWriteMessage(o, odd, true, 2); },
         seq({{34, 130, 133}, run(14, 1), {256}, run(15, 16), {235}})},
        {[](OutMsgBuffer& o) { buildAxisSelect(o, 1); }, {3, 132, 135}},
    };
    int n = 0;
    for (const auto& [build, want] : cases) {
        OutMsgBuffer out{};
        out.fill(99); // a stale buffer must not leak into the message
        build(out);
        EXPECT_EQ(std::vector<int>(out.begin(), out.begin() + out[0]), want) << "case " << n++;
    }
}

TEST(MemoryTransfer, IncomingMemoryFillsTheImageUntilTheMessageEnds)
{
    struct Case {
        int id, payload, copied; // elements changed
        bool faults;             // a short message: the subscript error after the copy
    };
    for (const Case& c : {Case{120, 60, 60, false}, Case{137, 32, 30, false}, Case{120, 20, 21, true},
                          Case{120, 0, 1, true}, Case{136, 30, 30, true}}) {
        InBuffer buf{};
        const int length = c.payload + 3;
        buf[0] = static_cast<int16_t>(length);
        buf[1] = static_cast<int16_t>(c.id);
        for (int i = 0; i <= c.payload; ++i) buf[static_cast<std::size_t>(i + 2)] = static_cast<int16_t>(i + 1);
        MemoryImage image;
        image.fill(-1);
        FirmwareVersion version;
        bool faulted = false;
        try {
            if (c.id == 120) PutMemoryMsg(image, MsgView(buf, length));
            else version = PutAxisMemoryMsg(image, MsgView(buf, length));
        } catch (const HostError& e) {
            faulted = e.kind() == HostErrorKind::Subscript;
        }
        EXPECT_EQ(faulted, c.faults) << c.id << "/" << c.payload;
        for (int i = 0; i < 65; ++i) EXPECT_EQ(image[i], i < c.copied ? i + 1 : -1) << c.payload << " element " << i;
        EXPECT_EQ(version.low + 256 * version.high, c.id == 137 ? 31 + 256 * 32 : 0);
    }
}
