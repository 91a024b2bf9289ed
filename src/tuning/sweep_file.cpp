#include "tuning/sweep_file.h"

#include "telemetry/log_line.h"
#include "tuning/sweep_export.h"
#include "tuning/tuning_texts.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

namespace kdx {

namespace {

constexpr std::size_t kTuningFirstFields = 2 + kGainCount + 2; // rate, error, gains, spares
constexpr std::size_t kTuningFields = 2;
constexpr std::size_t kExportFields = 3;        // time, rate, error
constexpr std::size_t kDirectMotorColumns = 8;  // rate, error, P, I, D, gain, angle, power
constexpr std::size_t kRelayedRateColumn = 3;   // after Axis, AxisID, AxisAngle
constexpr std::size_t kRelayedPrefixFields = 2; // "Tilt,0," is left out for an unknown axis

std::vector<std::string_view> splitFields(std::string_view line)
{
    std::vector<std::string_view> fields;
    for (;;) {
        const auto comma = line.find(',');
        fields.push_back(line.substr(0, comma));
        if (comma == std::string_view::npos) return fields;
        line.remove_prefix(comma + 1);
    }
}

// A decimal number filling the field, blanks aside, within a 32-bit float's range.
std::optional<float> numberField(std::string_view field)
{
    while (!field.empty() && field.front() == ' ') field.remove_prefix(1);
    while (!field.empty() && field.back() == ' ') field.remove_suffix(1);
    double value = 0;
    const auto [end, ec] = std::from_chars(field.data(), field.data() + field.size(), value);
    if (field.empty() || ec != std::errc() || end != field.data() + field.size() || !std::isfinite(value) ||
        std::abs(value) > std::numeric_limits<float>::max())
        return std::nullopt;
    return static_cast<float>(value);
}

// The file's lines with their 1-based numbers, line ends removed, empty lines skipped.
class Lines {
public:
    explicit Lines(std::span<const uint8_t> bytes) : text_(reinterpret_cast<const char*>(bytes.data()), bytes.size()) {}

    bool next(std::string_view& line, int& number)
    {
        while (!text_.empty()) {
            const auto end = text_.find('\n');
            line = text_.substr(0, end);
            text_.remove_prefix(end == std::string_view::npos ? text_.size() : end + 1);
            ++number_;
            if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
            if (line.empty()) continue;
            number = number_;
            return true;
        }
        return false;
    }

private:
    std::string_view text_;
    int number_ = 0;
};

std::string lineError(int number, const std::string& what) { return "line " + std::to_string(number) + ": " + what; }

// Whether `line` is the header `titles` (CR LF at its end), alone or with debug titles.
bool isLogHeader(std::string_view line, std::string_view titles)
{
    titles.remove_suffix(2);
    return line.starts_with(titles) && (line.size() == titles.size() || line[titles.size()] == ',');
}

} // namespace

std::variant<SweepFile, std::string> readSweepFile(std::span<const uint8_t> bytes, int motor)
{
    Lines lines(bytes);
    std::string_view line;
    int number = 0;
    if (!lines.next(line, number)) return std::string("the file is empty");

    SweepFile sweep;
    std::size_t fields = 0; // per sample line
    std::size_t column = 0; // of the rate; the error follows it
    if (line == tuning_text::FileHeader) {
        sweep.source = SweepSource::TuningFile;
        fields = kTuningFirstFields;
    } else if (line.starts_with(sweep_export::Mark)) {
        sweep.source = SweepSource::SweepExport;
        if (!lines.next(line, number) || line != sweep_export::Columns)
            return lineError(number, "the column titles of an exported sweep are missing");
        fields = kExportFields;
        column = 1;
    } else if (isLogHeader(line, telemetryFileTitles(false))) {
        sweep.source = SweepSource::DirectLog;
        column = kDirectMotorColumns * static_cast<std::size_t>(motor);
    } else if (isLogHeader(line, telemetryFileTitles(true))) {
        sweep.source = SweepSource::QVaneLog;
        if (motor != 0) return std::string("a Q-Vane log holds one motor");
        column = kRelayedRateColumn;
    } else {
        return std::string("neither a tuning file nor a telemetry log (its first line is neither header)");
    }
    if (sweep.source == SweepSource::DirectLog || sweep.source == SweepSource::QVaneLog)
        fields = splitFields(line).size();

    while (lines.next(line, number)) {
        const auto values = splitFields(line);
        std::size_t at = column;
        if (sweep.source == SweepSource::QVaneLog && values.size() + kRelayedPrefixFields == fields)
            at -= kRelayedPrefixFields;
        else if (values.size() != fields)
            return lineError(number, std::to_string(values.size()) + " fields where " + std::to_string(fields) +
                                         " were expected");
        const auto rate = numberField(values[at]), error = numberField(values[at + 1]);
        if (!rate || !error) return lineError(number, "the rate or error is not a number");
        if (sweep.source == SweepSource::TuningFile && !sweep.gains) {
            GainSet gains;
            for (int g = 0; g < kGainCount; ++g) {
                const auto v = numberField(values[2 + static_cast<std::size_t>(g)]);
                if (!v) return lineError(number, "a gain is not a number");
                gains[kAllGains[static_cast<std::size_t>(g)]] = *v;
            }
            sweep.gains = gains;
            fields = kTuningFields;
        }
        sweep.rate.push_back(*rate);
        sweep.error.push_back(*error);
    }
    if (sweep.rate.empty()) return std::string("no samples");
    return sweep;
}

} // namespace kdx
