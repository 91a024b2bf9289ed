// kdxctl set: changes parameters of a configuration file in display units, by the rules
// of the main window's entry prompts.
#include "cli/cli_args.h"
#include "cli/command.h"
#include "cli/commands.h"
#include "cli/config_input.h"
#include "cli/option_parser.h"
#include "cli/stdout_check.h"
#include "config/driver_config.h"
#include "config/entry_commands.h"
#include "config/param_fields.h"
#include "config/round_trip.h"
#include "core/host_error.h"
#include "core/host_numeric.h"

#include <cctype>
#include <ostream>
#include <sstream>

namespace kdx::cli {

namespace {

const OptionDecl kOptions[] = {
    {.name = "--motor",
     .takes = Takes::Value,
     .metavar = "M",
     .help = "the motor to change, 1 or 2 as kdxtool numbers them (0 also\n"
             "means 1); needed for a two-axis file"},
    {.name = "-o",
     .takes = Takes::Value,
     .metavar = "OUT",
     .needs = "a file name",
     .help = "write the result to OUT instead of replacing FILE"},
};

} // namespace

const Syntax kSetSyntax{
    .synopsis = "usage: kdxctl set FILE NAME=VALUE... [--motor 1|2] [-o OUT]",
    .about = "Changes parameters of a configuration file as the main window's entry prompts\n"
             "do: NAME as kdxctl show --tsv prints it, VALUE in the units the window shows\n"
             "(PwmFreqHz in kHz; QVaneAxis also Tilt, Roll, Pan or Off; DriveRatio also as\n"
             "3:1; Reverse 0 or 1), checked against the range the prompt accepts. Prints\n"
             "each change and a warning for a value the module will give back otherwise.\n"
             "Only the bytes of the parameters named change, and the file is replaced in\n"
             "one step. A value outside its range is dropped, as the window drops it; then\n"
             "nothing is written and the exit status is 1.",
    .options = kOptions,
    .positionals = {.min = 2,
                    .max = 1000,
                    .missing = "expected a configuration file and NAME=VALUE",
                    .extra = "too many changes ('{}' is extra)"},
    .helpColumn = 13,
    .example = "kdxctl set gimbal.kdx --motor 2 PTerm=120 DTerm=40\n"
               "kdxctl set pan.bls PwmFreqHz=20 QVaneAxis=Pan -o pan-20k.bls",
};

namespace {

struct Change {
    const ParamField* field;
    std::string answer; // the text the entry prompt would be given
};

std::string lower(std::string s)
{
    for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

// A decimal number as the prompt reads it ("12", "-0.5", "1e3"), with nothing after it.
bool isNumber(const std::string& s)
{
    std::size_t i = 0, digits = 0;
    if (i < s.size() && (s[i] == '+' || s[i] == '-')) ++i;
    for (; i < s.size() && std::isdigit(static_cast<unsigned char>(s[i])); ++i) ++digits;
    if (i < s.size() && s[i] == '.')
        for (++i; i < s.size() && std::isdigit(static_cast<unsigned char>(s[i])); ++i) ++digits;
    if (digits == 0) return false;
    if (i < s.size() && (s[i] == 'e' || s[i] == 'E')) {
        if (++i < s.size() && (s[i] == '+' || s[i] == '-')) ++i;
        const std::size_t start = i;
        while (i < s.size() && std::isdigit(static_cast<unsigned char>(s[i]))) ++i;
        if (i == start) return false;
    }
    return i == s.size();
}

// NAME=VALUE to the field and the prompt's answer, or the usage error.
std::optional<Change> parseChange(const std::string& word, std::string& usage)
{
    const auto eq = word.find('=');
    if (eq == std::string::npos) {
        usage = "'" + word + "' is not NAME=VALUE";
        return std::nullopt;
    }
    const std::string name = word.substr(0, eq);
    std::string value = word.substr(eq + 1);
    const ParamField* field = findParamField(name);
    if (!field) {
        usage = "no parameter '" + name + "' (the names are those kdxctl show --tsv prints)";
        return std::nullopt;
    }
    static const char* const kAxes[] = {"tilt", "roll", "pan", "off"};
    for (int a = 0; a < 4 && field->label == ParamLabel::Axistb && !field->reverse; ++a)
        if (lower(value) == kAxes[a]) value = std::to_string(a);
    if (field->label == ParamLabel::Ratiotb && value.ends_with(":1")) value.resize(value.size() - 2);
    if (field->reverse ? (value != "0" && value != "1") : (!value.empty() && !isNumber(value))) {
        usage = name + "=" + word.substr(eq + 1) + ": " +
                (field->reverse ? std::string("Reverse is 0 or 1") : "not a number");
        return std::nullopt;
    }
    return Change{field, value};
}

// A range end as the prompt would name it: "-2550", "0.5".
std::string number(double v)
{
    std::ostringstream s;
    s << v;
    return s.str();
}

} // namespace

int runSet(const Arguments& args, CommandIo& io)
{
    const std::string& file = args.positionals()[0];
    const std::string& out = args.has("-o") ? args.value("-o") : file;
    std::vector<Change> changes;
    std::string usage;
    for (std::size_t i = 1; i < args.positionals().size(); ++i) {
        const auto change = parseChange(args.positionals()[i], usage);
        if (!change) return args.usageError(io, usage);
        changes.push_back(*change);
    }
    std::optional<int> motor;
    if (args.has("--motor") && !(motor = parseMotor(args.value("--motor"))))
        return args.usageError(io, "--motor is 1 or 2");

    auto fail = [&](const std::string& why) {
        io.err << "kdxctl: " << why << "\n";
        return 1;
    };
    std::string error;
    const ConfigLoad load = loadConfigInput(file, error, "nothing was changed");
    if (load.status == ConfigLoadStatus::Failed) return fail(error);
    if (load.twoAxis() && !motor) return args.usageError(io, file + " holds two motors: say which with --motor 1 or 2");
    if (!load.twoAxis() && motor.value_or(0) != 0)
        return args.usageError(io, file + " holds one motor block: --motor 1");
    const int m = motor.value_or(0);

    DriverConfig config;
    applyConfigLoad(load, config.image());
    const MemoryImage original = config.image();
    std::vector<const ParamField*> changed;
    int dropped = 0;
    try {
        config.ImageToParams();
        for (const Change& c : changes) {
            const ParamField& field = *c.field;
            const std::string what = std::string(field.name) + " motor " + std::to_string(m + 1) + ": ";
            const std::string before = fieldValue(config, field, m);
            if (field.reverse) {
                config.Reversecb_Click(m, c.answer == "1");
            } else {
                const EntryCommand& command = *findEntryCommand(field.label);
                const float value = AskValueResult(entryCurrentValue(config, command, m), c.answer);
                const RoundTrip check = checkRoundTrip(config, command, m, value);
                if (!applyEntry(config, command, m, value)) {
                    ++dropped;
                    io.out << what << c.answer << " dropped: outside " << number(command.lower) << " .. "
                           << number(command.upper) << "\n";
                    continue;
                }
                if (!check.warning.empty()) io.err << "kdxctl: warning: " << check.warning << "\n";
            }
            io.out << what << before << " -> " << fieldValue(config, field, m) << "\n";
            changed.push_back(&field);
        }
        if (dropped > 0)
            return fail(std::to_string(dropped) + (dropped == 1 ? " value was" : " values were") +
                        " dropped as out of range; " + out + " was not written");
        config.ParamsToImage();
    } catch (const HostError& e) {
        return fail(file + ": " + e.what() + "; " + out + " was not written");
    }

    // Only the bytes of the parameters named change: the window's write would rewrite
    // every parameter, and some (a PWM count, for one) do not survive that unchanged.
    MemoryImage result = original;
    for (const ParamField* field : changed) copyField(result, config.image(), *field, m);
    result[layout::ImageChecksum] = imageChecksum(result);
    if (const auto box = saveConfigFile(out, result, load.twoAxis())) return fail(out + ": " + box->prompt);
    io.out << "saved " << out << "\n";
    if (!outputReached(io.out)) return fail(std::string(kOutputLost) + "; " + out + " was saved");
    return 0;
}

} // namespace kdx::cli
