// kdxctl's conversation with a module: a read takes only the reply it asked for, whole.
#include "config/memory_session.h"

#include <gtest/gtest.h>

using namespace kdx;

namespace {

using Frames = std::vector<std::vector<uint8_t>>;

// A module that sends `early` frames and its telemetry before the read request, and
// `late` frames once it has been asked.
struct ScriptedLink {
    Frames early, late;
    bool asked = false, earlySent = false, lateSent = false;
    int cyclicId = 121;

    ByteLinkIo io()
    {
        return {[this](std::span<const uint8_t> bytes, std::string&) {
                    asked = asked || (bytes.size() > 2 && (bytes[2] == 112 || bytes[2] == 130));
                    return true;
                },
                [this](std::vector<uint8_t>& out, int, std::string&) {
                    Frames* send = nullptr;
                    if (!earlySent) {
                        early.push_back(buildFrame(cyclicId, std::vector<uint8_t>(45, 0)));
                        send = &early, earlySent = true;
                    } else if (asked && !lateSent) {
                        send = &late, lateSent = true;
                    }
                    if (send)
                        for (const auto& f : *send) out.insert(out.end(), f.begin(), f.end());
                    return true;
                }};
    }
};

} // namespace

TEST(MemorySession, ReadTakesOnlyTheRequestedFullLengthReply)
{
    const auto direct = [](uint8_t v, std::size_t n = 60) { return buildFrame(120, std::vector<uint8_t>(n, v)); };
    const auto relayed = [](int axis, uint8_t v) { return buildFrame(136 + axis, std::vector<uint8_t>(32, v)); };
    struct Case {
        const char* name;
        bool qvane;
        Frames early, late;
        bool ok;
    };
    const Case cases[] = {
        {"a reply before the request", false, {direct(0xEE)}, {direct(0x11)}, true},
        {"a short reply first", false, {}, {direct(0xEE, 20), direct(0x11)}, true},
        {"another axis's reply after it", true, {}, {relayed(1, 0x11), relayed(0, 0xEE)}, true},
        {"only a reply before the request", false, {direct(0xEE)}, {}, false},
        {"a direct reply from a Q-Vane", true, {}, {direct(0xEE)}, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ScriptedLink link{c.early, c.late};
        link.cyclicId = c.qvane ? 122 : 121;
        MemorySession session(link.io(), "/dev/ttyUSB0");
        std::string error;
        ASSERT_TRUE(session.detectTarget(1000, error)) << error;
        session.setAxis(1);
        MemoryImage image{};
        image.fill(0x55);
        EXPECT_EQ(session.readMemory(image, 20, 1, error), c.ok) << error;
        EXPECT_EQ(image[0], c.ok ? 0x11 : 0x55);
        if (!c.ok) {
            EXPECT_EQ(error, "no memory contents from /dev/ttyUSB0 within 20 ms");
        }
    }
}
