#include "config/entry_commands.h"
#include "core/host_error.h"

#include <gtest/gtest.h>

using namespace kdx;

namespace {

DriverConfig defaults()
{
    DriverConfig c;
    c.params().PwmFreqHz = {8000, 8000};
    c.params().Poles = c.params().FixedPosTrim = {100, 100};
    c.params().PTerm = c.params().GainPerc = {50, 50};
    c.params().DriveRatio = {1, 1};
    return c;
}

// A click on the label of `motor` answered with `answer`, as the window runs it.
bool click(DriverConfig& config, ParamLabel label, std::string_view answer, int motor = 1)
{
    const EntryCommand* cmd = findEntryCommand(label);
    return applyEntry(config, *cmd, motor, AskValueResult(entryCurrentValue(config, *cmd, motor), answer));
}

} // namespace

TEST(EntryCommands, AnswersAreCheckedAgainstTheAcceptedRange)
{
    using L = ParamLabel;
    const std::tuple<ParamLabel, const char*, bool, const char*> cases[] = {
        // label, answer, accepted, caption
        {L::PTermtb, "2500", true, "2500"}, // the prompt says 2000
        {L::PTermtb, "2551", false, "50"},     {L::DTermtb, "-2551", false, "0"},
        {L::Polestb, "abc", true, "0"},        {L::Polestb, "65", false, "100"}, // text reads as 0
        {L::Freqtb, "abc", false, "8.0"},      {L::Freqtb, "20", true, "20.0"},
        {L::Freqtb, "20.5", true, "20.0"},     {L::Freqtb, "32.5", false, "8.0"}, // 20500 Hz kept
        {L::FPTrimtb, "360", false, "100"},    {L::FPTrimtb, "359", true, "359"}, // the prompt says 360
        {L::Gaintb, "-5000", true, "-5000"},   {L::Ratiotb, "0.4", false, "1:1"}, // the prompt says 0..
        {L::Axistb, "2.5", true, "Off"},       {L::Axistb, "4", false, "Tilt"},   // kept as typed
        {L::IAngletb, "16.01", false, "0.00"}, {L::PowerHitb, "12.34", true, "12.3"},
        {L::Powertb, "100.5", false, "0.0"},   {L::DTermLimittb, " 7 volts", true, "7"},
    };
    for (const auto& [label, answer, accepted, caption] : cases) {
        DriverConfig config = defaults();
        int refreshes = 0;
        config.setRefreshHandler([&] { ++refreshes; });
        const std::string what = std::string(labelName(label)) + " " + answer;
        EXPECT_EQ(click(config, label, answer), accepted) << what;
        EXPECT_EQ(config.caption(label, 1), caption) << what;
        EXPECT_EQ(config.GetDataModified(), accepted) << what;
        EXPECT_EQ(refreshes, 1) << what << ": the display refreshes either way";
        EXPECT_EQ(config.caption(label, 0), defaults().caption(label, 0)) << what << ": motor 0 untouched";
    }
    DriverConfig config = defaults();
    click(config, ParamLabel::Freqtb, "20.5");
    config.ParamsToImage();
    EXPECT_EQ(config.image()[32] + 256 * config.image()[33], 1951); // 40 MHz / 20500 Hz, floored
}

TEST(EntryCommands, CancelStoresTheCurrentValueRoundedToTwoDecimals)
{
    using Set = std::function<void(DriverConfig&)>;
    const std::tuple<ParamLabel, Set, const char*, float> cases[] = {
        // label, value, offered, stored (as offered)
        {ParamLabel::IAngletb, [](DriverConfig& c) { c.params().IAngle[1] = 1.23456f; }, "1.23", 1.23f},
        {ParamLabel::Gaintb, [](DriverConfig& c) { c.params().GainPerc[1] = -33.336f; }, "-33.34", -33.34f},
        {ParamLabel::Freqtb, [](DriverConfig& c) { c.params().PwmFreqHz[1] = 15003.75; }, "15.00", 15.0f},
        {ParamLabel::DebIDtb, [](DriverConfig& c) { c.setDebugId(200); }, "200.00", 200.0f},
    };
    for (const auto& [label, set, offered, stored] : cases) {
        DriverConfig config = defaults();
        set(config);
        const EntryCommand& cmd = *findEntryCommand(label);
        EXPECT_EQ(askValueDefault(entryCurrentValue(config, cmd, 1)), offered);
        EXPECT_TRUE(click(config, label, "")) << labelName(label);
        EXPECT_EQ(entryCurrentValue(config, cmd, 1), stored) << labelName(label);
        EXPECT_TRUE(config.GetDataModified()) << labelName(label) << ": Cancel marks the data modified";
    }
}

TEST(EntryCommands, DebugIdAndBadInput)
{
    DriverConfig config = defaults();
    config.image()[0] = 3;
    EXPECT_TRUE(click(config, ParamLabel::DebIDtb, "12.5"));
    EXPECT_EQ(config.caption(ParamLabel::DebIDtb, 0), "12"); // half to even
    EXPECT_FALSE(click(config, ParamLabel::DebIDtb, "256"));
    EXPECT_EQ(config.image()[0], 3) << "only the copy changes";

    for (ParamLabel label : kRefreshOrder) EXPECT_THROW(click(config, label, "1", 2), HostError) << labelName(label);
    EXPECT_THROW(click(config, ParamLabel::PTermtb, "1e39"), HostError); // beyond a 32-bit float
    EXPECT_EQ(config.caption(ParamLabel::PTermtb, 1), "50");
}
