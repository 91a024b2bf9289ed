// Typed entries: text in every prompt of the main window's parameter labels and of the
// tuning window's gain panel, as a user types it (or cancels), over a configuration
// read from a module (the image comes from the input), and the step buttons between.
//
// The input is the image's 60 bytes, then a script: an entry on one of the sixteen
// parameter labels for either motor, an entry on one of the seven gain labels, a step
// button, or a motor button. A host error abandons that click, as the event guard does.
//
// Checked: an answer is taken exactly when its value lies in the label's range (both
// ends included), then the parameter holds it and nothing else changed; an answer out of
// range changes nothing; the label then shows without a fault, and a configuration
// that could be written still can. A gain typed within its range is taken, one out of
// it is not, and no other gain changes; the gains stay numbers and the gain message
// builds from them after every click.
#include "config/driver_config.h"
#include "config/entry_commands.h"
#include "core/host_error.h"
#include "core/host_numeric.h"
#include "fuzz_support.h"
#include "link/frame.h"
#include "tuning/gain_message.h"
#include "tuning/gain_panel.h"
#include "tuning/standalone_context.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cmath>
#include <cstring>
#include <vector>

namespace {

using namespace kdx;

[[noreturn]] void fail(const char* what) { fuzz::fail("entry", what); }

// The input box answers with the text the script gives it.
class TypingDialogs : public FixedAnswerDialogs {
public:
    TypingDialogs() : FixedAnswerDialogs(Answer::Yes) {}
    std::string InputBox(const std::string&, const std::string&, const std::string&) override { return typed; }
    std::string typed;
};

// Every parameter label's value, for both motors.
std::vector<float> currentValues(const DriverConfig& config)
{
    std::vector<float> values;
    for (const EntryCommand& c : kEntryCommands)
        for (int m = 0; m < 2; ++m) values.push_back(entryCurrentValue(config, c, m));
    return values;
}

// Whether Write could turn the parameters into an image now.
bool writable(const DriverConfig& config)
{
    DriverConfig copy = config;
    try {
        copy.ParamsToImage();
        return true;
    } catch (const HostError&) {
        return false;
    }
}

bool near(float a, float b) { return a == b || std::fabs(a - b) <= 1e-6f * std::fmax(std::fabs(a), std::fabs(b)); }

void parameterEntry(DriverConfig& config, FuzzedDataProvider& in)
{
    const std::size_t index = in.ConsumeIntegralInRange<std::size_t>(0, kEntryCommands.size() - 1);
    const EntryCommand& command = kEntryCommands[index];
    const int motor = in.ConsumeIntegralInRange<int>(0, 1);
    const std::string typed = in.ConsumeRandomLengthString(40);

    const float current = entryCurrentValue(config, command, motor);
    (void)askValueDefault(current);
    float value = 0;
    try {
        value = AskValueResult(current, typed);
    } catch (const HostError&) {
        return; // a number too large for the host: the click is abandoned, nothing stored
    }
    const std::vector<float> before = currentValues(config);
    const bool couldWrite = writable(config);
    const bool stored = applyEntry(config, command, motor, value);
    if (stored != (value >= command.lower && value <= command.upper)) fail("an answer was taken against its range");
    const std::vector<float> after = currentValues(config);
    for (std::size_t i = 0; i < after.size(); ++i) {
        const bool target =
            i / 2 == index && (static_cast<int>(i % 2) == motor || command.target == EntryTarget::DebugId);
        if (!(target && stored) && std::memcmp(&after[i], &before[i], sizeof(float)) != 0)
            fail("an entry changed another parameter, or one it did not take");
    }
    if (stored) {
        const float held = after[index * 2 + static_cast<std::size_t>(motor)];
        const float expected = command.target == EntryTarget::DebugId ? CInt(value) : value;
        if (!near(held, expected)) fail("the parameter does not hold the value taken");
        if (!config.GetDataModified()) fail("a value taken does not mark the data modified");
        if (couldWrite && !writable(config)) fail("a value taken cannot be written to the module");
        try {
            (void)config.caption(command.label, motor);
        } catch (const HostError&) {
            fail("a value taken cannot be shown");
        }
    }
}

void gainEntry(GainPanel& panel, TypingDialogs& dialogs, FuzzedDataProvider& in)
{
    const Gain which = kAllGains[in.ConsumeIntegralInRange<std::size_t>(0, kGainCount - 1)];
    const GainEntry& e = kGainEntries[static_cast<std::size_t>(which)];
    dialogs.typed = in.ConsumeRandomLengthString(40);
    const double typed = Val(dialogs.typed); // a number too large for the host abandons the click
    const GainSet before = panel.values();
    const bool open = !e.needsActive || panel.TuningActive();
    panel.ValueTb_Click(which);
    GainSet others = panel.values();
    others[which] = before[which];
    if (!(others == before)) fail("a gain entry changed another gain");
    const float now = panel.values()[which];
    if (now != before[which] && (!open || now < e.min || now > e.max))
        fail("a gain entry stored a value out of its range");
    if (open && !dialogs.typed.empty() && typed >= e.min && typed <= e.max && now != toSingle(typed))
        fail("a gain typed within its range was not taken");
}

void checkPanel(const GainPanel& panel)
{
    for (Gain g : kAllGains) {
        const float v = panel.values()[g];
        if (!std::isfinite(v)) fail("a gain is not a number");
    }
    OutMsgBuffer out{};
    const GainSet& v = panel.values();
    try {
        buildGainMsg(out, v.P, v.I, v.IA, v.D, v.G, v.V1, v.V2, panel.MotorIndex());
        (void)frameBody(out);
    } catch (const HostError&) {
        fail("the gain message cannot be built from the panel's values");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    FuzzedDataProvider in(data, size);
    DriverConfig config;
    const std::vector<uint8_t> image = in.ConsumeBytes<uint8_t>(60);
    for (std::size_t i = 0; i < image.size(); ++i) config.image()[i] = image[i];
    try {
        config.acceptNewImage();
    } catch (const HostError&) {
        // A configuration that cannot be shown whole: the values read so far stay.
    }

    FixedGainStore store(GainSet{100, 20, 2, 50, 15, 40, 100}, true);
    TypingDialogs dialogs;
    NoShiftKey keys;
    GainPanel panel(store, dialogs, keys);
    while (in.remaining_bytes() > 0) {
        try {
            switch (in.ConsumeIntegralInRange<int>(0, 3)) {
            case 0: parameterEntry(config, in); break;
            case 1: gainEntry(panel, dialogs, in); break;
            case 2: {
                const Gain which = kAllGains[in.ConsumeIntegralInRange<std::size_t>(0, kGainCount - 1)];
                const int button = in.ConsumeIntegralInRange<int>(0, 1);
                in.ConsumeBool() ? panel.Inccb_Click(which, button) : panel.Deccb_Click(which, button);
                break;
            }
            default: panel.MotorSelcb_Click(in.ConsumeIntegralInRange<int>(0, 1)); break;
            }
        } catch (const HostError&) {
            // the click is abandoned
        }
        checkPanel(panel);
    }
    return 0;
}
