// Values the entry prompts accept that the module gives back otherwise: every value of
// each prompt's range, typed at its label's resolution, entered, written, read back and
// written once more.
#include "config/round_trip.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

using namespace kdx;

namespace {

// A configuration as a read leaves it: 20 kHz and a 1:1 drive on both motors.
DriverConfig asRead()
{
    DriverConfig config;
    for (int base : {0, 30}) {
        config.image()[static_cast<std::size_t>(base + 2)] = 208;
        config.image()[static_cast<std::size_t>(base + 3)] = 7;
        config.image()[static_cast<std::size_t>(base + 22)] = 64;
    }
    config.ImageToParams();
    return config;
}

// What a user types for the k-th step of a field shown with `decimals` decimals.
std::string typed(long k, int decimals)
{
    const long scale = decimals == 2 ? 100 : decimals == 1 ? 10 : 1;
    char text[32];
    if (decimals == 0) std::snprintf(text, sizeof text, "%ld", k);
    else
        std::snprintf(text, sizeof text, "%s%ld.%0*ld", k < 0 ? "-" : "", std::labs(k) / scale, decimals,
                      std::labs(k) % scale);
    return text;
}

} // namespace

TEST(RoundTrip, EveryValueOfEachPromptEitherComesBackOrIsWarnedAbout)
{
    using L = ParamLabel;
    struct Case {
        ParamLabel label;
        int decimals; // the label's; the PWM label shows whole kHz, but the prompt takes two
        int changed, drifting;
        const char* first; // the first and the last warning of the range
        const char* last;
    };
    const Case cases[] = {
        {L::PTermtb, 0, 0, 0, "", ""},
        {L::DTermtb, 0, 0, 0, "", ""},
        // Sixteenths of a degree: of each sixteenth's hundredths one comes back as typed,
        // 256 of 1601; 15.97 and up round to 256 sixteenths, of which the byte keeps 0.
        {L::IAngletb, 2, 1345, 0, "angle where I ramps to zero 0.01 deg will read back as 0.00 deg",
         "angle where I ramps to zero 16.00 deg will read back as 0.00 deg"},
        {L::IRatetb, 0, 0, 0, "", ""},
        {L::DTermLimittb, 0, 0, 0, "", ""},
        {L::Powertb, 1, 0, 0, "", ""},
        {L::PowerHitb, 1, 0, 0, "", ""},
        {L::PowerErrortb, 2, 1345, 0, "angle error for max power 0.01 deg will read back as 0.00 deg",
         "angle error for max power 16.00 deg will read back as 0.00 deg"},
        // 1.00 to 1.22 kHz need more than 32767 counts and read as the 8 kHz default (23);
        // seven just below a whole kHz read back as the next one (31.99 as 32.0).
        {L::Freqtb, 2, 30, 344, "PWM frequency 1.00 kHz will read back as 8.0 kHz",
         "PWM frequency 31.99 kHz will read back as 32.0 kHz"},
        {L::Gaintb, 0, 0, 0, "", ""},
        {L::RecoveryAngletb, 0, 0, 0, "", ""},
        {L::Polestb, 0, 0, 0, "", ""},
        // 16384 / ratio leaves too few counts for a tenth from 42.5:1 on.
        {L::Ratiotb, 1, 1272, 0, "motor-to-load drive ratio 42.5:1 will read back as 42.4:1",
         "motor-to-load drive ratio 200.0:1 will read back as 199.8:1"},
        // Two degrees per count, halves to even: every odd degree.
        {L::FPTrimtb, 0, 180, 0, "power-up fixed position trim 1 deg will read back as 0 deg",
         "power-up fixed position trim 359 deg will read back as 360 deg"},
        {L::Axistb, 0, 0, 0, "", ""},
        // The entry changes a copy that no write sends: only the value held comes back.
        {L::DebIDtb, 0, 255, 0, "debug identifier 1 will read back as 0", "debug identifier 255 will read back as 0"},
    };
    const DriverConfig config = asRead();
    for (const Case& c : cases) {
        const EntryCommand& command = *findEntryCommand(c.label);
        SCOPED_TRACE(std::string(labelName(c.label)));
        const long scale = c.decimals == 2 ? 100 : c.decimals == 1 ? 10 : 1;
        int changed = 0, drifting = 0;
        std::string first, last;
        for (long k = std::lround(command.lower * scale); k <= std::lround(command.upper * scale); ++k) {
            const std::string text = typed(k, c.decimals);
            const RoundTrip r = checkRoundTrip(config, command, 1, AskValueResult(0, text));
            ASSERT_TRUE(r.accepted) << text;
            changed += r.changes();
            drifting += r.drifts() && !r.changes();
            EXPECT_EQ(r.warning.empty(), !r.changes() && !r.drifts()) << text;
            if (!r.warning.empty()) (first.empty() ? first : last) = r.warning;
        }
        EXPECT_EQ(changed, c.changed);
        EXPECT_EQ(drifting, c.drifting);
        EXPECT_EQ(first, c.first);
        EXPECT_EQ(last.empty() ? first : last, c.last);
    }
}

TEST(RoundTrip, WarningsSayWhatTheModuleGivesBack)
{
    using L = ParamLabel;
    const std::tuple<ParamLabel, const char*, const char*> cases[] = {
        {L::Freqtb, "1.2", "PWM frequency 1.20 kHz will read back as 8.0 kHz"},
        {L::Freqtb, "1.23", ""}, // 32520 counts: fits
        // 40 MHz / 1260 Hz = 31746.03 counts; read back as 40 MHz / 31746, the period
        // in ticks comes out a hair below 31746 and is floored.
        {L::Freqtb, "1.26",
         "PWM frequency 1.26 kHz is stored as 31746, which a read and a write with no edit change to 31745"},
        {L::PowerErrortb, "16", "angle error for max power 16.00 deg will read back as 0.00 deg"},
        {L::PowerErrortb, "15.9375", ""},
        {L::FPTrimtb, "3", "power-up fixed position trim 3 deg will read back as 4 deg"},
        {L::Axistb, "2.5", "Q-Vane axis 2.50 will read back as Pan"}, // shown as Off until then
        {L::PTermtb, "2551", ""},                                     // dropped: nothing to say
    };
    DriverConfig config = asRead();
    int calls = 0;
    config.setRefreshHandler([&] { ++calls; });
    config.setDataModifiedHandler([&](bool) { ++calls; });
    for (const auto& [label, text, warning] : cases) {
        const RoundTrip r = checkRoundTrip(config, *findEntryCommand(label), 0, AskValueResult(0, text));
        EXPECT_EQ(r.warning, warning) << text;
    }
    EXPECT_EQ(calls, 0) << "a check neither repaints the window nor marks its data modified";
    EXPECT_EQ(config.params(), asRead().params());
}

// Reading a module and writing it back with no edit lowers many PWM counts by one.
TEST(RoundTrip, PwmCountsThatDropOnAReadAndWrite)
{
    MemoryImage image{};
    int dropped = 0;
    for (int count = 1250; count <= 32767; ++count) {
        image[2] = static_cast<int16_t>(count & 255);
        image[3] = static_cast<int16_t>(count >> 8);
        const int back = rewrittenRaw(image, kParamFields[0], 0);
        ASSERT_GE(back, count - 1) << count;
        dropped += back != count;
    }
    EXPECT_EQ(dropped, 3470);
}
