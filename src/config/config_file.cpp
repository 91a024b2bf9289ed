#include "config/config_file.h"

#include "core/atomic_file.h"
#include "core/host_error.h"
#include "core/host_numeric.h"
#include "core/read_file.h"
#include "platform/dialogs.h"

#include <cctype>

namespace kdx {

using namespace configfile;

namespace {

constexpr std::string_view kTitleRead = "File Read";
constexpr std::string_view kTitleWrite = "File Write";
constexpr std::string_view kTitleQuestion = "Config Read";
constexpr std::size_t kMaxFileBytes = 16u << 20; // no configuration file comes near this

// First element of the motor-1 block in a two-axis file.
constexpr int kSecondMotorOffset = layout::MotorBlockSize;

ConfigLoad failed(ConfigLoadError error, std::string prompt, int style)
{
    ConfigLoad r;
    r.status = ConfigLoadStatus::Failed;
    r.error = error;
    r.box = MessageBoxText{std::move(prompt), std::string(kTitleRead), style};
    return r;
}

char hexDigit(int v) { return "0123456789ABCDEF"[v & 15]; }

} // namespace

std::string AxisName(int axis)
{
    switch (axis) {
    case 0: return "Tilt";
    case 1: return "Roll";
    case 2: return "Pan";
    default: return "None";
    }
}

std::vector<uint8_t> configFileBytes(const MemoryImage& image, bool twoAxis)
{
    const int records = twoAxis ? TwoAxisRecords : SingleAxisRecords;
    std::vector<uint8_t> out;
    out.reserve(static_cast<std::size_t>(RecordBytes * (records + 1)));
    auto endRecord = [&] {
        out.push_back('\r');
        out.push_back('\n');
    };
    out.insert(out.end(), Header.begin(), Header.end());
    endRecord();
    for (int r = 0; r < records; ++r) {
        out.push_back('*');
        for (int k = 0; k < ValuesPerRecord; ++k) {
            const int v = lowByte(image[static_cast<std::size_t>(r * ValuesPerRecord + k)]);
            out.push_back(static_cast<uint8_t>(hexDigit(v >> 4)));
            out.push_back(static_cast<uint8_t>(hexDigit(v)));
        }
        out.push_back('*');
        endRecord();
    }
    return out;
}

ConfigLoad parseConfigFile(std::span<const uint8_t> bytes, bool targetIsQVane)
{
    ConfigLoad r;
    int line = 0;
    for (std::size_t off = 0; off < bytes.size(); off += RecordBytes) {
        // A short last record is read as far as it goes; if it lacks its closing "*"
        // it is an invalid line like any other.
        const auto rec = bytes.subspan(off, std::min<std::size_t>(RecordBytes, bytes.size() - off));
        ++line;
        if (rec.size() >= 2 && rec[1] == '!') continue;
        ++r.dataRecords;
        if (rec[0] != '*' || rec.size() < RecordChars || rec[RecordChars - 1] != '*') {
            ConfigLoad bad = failed(ConfigLoadError::InvalidFormat,
                                    "Invalid data format on input line " + Format(line, "0"), box::Critical);
            bad.dataRecords = r.dataRecords;
            bad.errorLine = line;
            return bad;
        }
        for (std::size_t i = 1; i < RecordChars - 1 && r.firstNonHexLine == 0; ++i)
            if (!std::isxdigit(rec[i])) r.firstNonHexLine = line;
        for (int k = 0; k < ValuesPerRecord; ++k) {
            if (static_cast<int>(r.values.size()) >= MaxValues) break;
            std::string text = "&H";
            text += static_cast<char>(rec[static_cast<std::size_t>(1 + 2 * k)]);
            text += static_cast<char>(rec[static_cast<std::size_t>(2 + 2 * k)]);
            // Two hex digits at most: Val gives 0 .. 255 here, so CInt cannot overflow.
            r.values.push_back(CInt(Val(text)));
        }
    }
    if (r.dataRecords != TwoAxisRecords && r.dataRecords != SingleAxisRecords) {
        ConfigLoad bad = failed(ConfigLoadError::Insufficient, "Insufficent Data In Config File", box::Critical);
        bad.dataRecords = r.dataRecords;
        return bad;
    }
    r.status = ConfigLoadStatus::Loaded;
    if (targetIsQVane && r.twoAxis()) {
        const std::string first = AxisName(r.values[layout::AxisFlags] & 3);
        const std::string second = AxisName(r.values[kSecondMotorOffset + layout::AxisFlags] & 3);
        r.status = ConfigLoadStatus::AskMotor;
        r.box = MessageBoxText{"The config contains data for 2 motors : " + first + " and " + second + ". Motor 1 (" +
                                   first +
                                   ") will be loaded by default if you click 'Yes'. Click 'No' to load "
                                   "the second motor data (" +
                                   second + ") instead.",
                               std::string(kTitleQuestion), box::YesNo};
    }
    return r;
}

bool applyConfigLoad(const ConfigLoad& load, MemoryImage& image, bool secondMotor)
{
    if (load.status == ConfigLoadStatus::Failed) return false;
    const int expected = load.dataRecords * ValuesPerRecord;
    if (static_cast<int>(load.values.size()) != expected) return false;
    int from = 0;
    int count = expected;
    if (secondMotor && load.twoAxis()) {
        from = kSecondMotorOffset;
        count = layout::MotorBlockSize;
    }
    for (int i = 0; i < count; ++i)
        image[static_cast<std::size_t>(i)] = load.values[static_cast<std::size_t>(from + i)];
    return true;
}

ConfigLoad loadConfigFile(const std::string& path, bool targetIsQVane)
{
    const FileBytes file = readFileBytes(path, kMaxFileBytes);
    switch (file.failure) {
    case FileBytes::Failure::Open:
        return failed(ConfigLoadError::Open, "Error opening config file: " + file.reason, box::OkOnly);
    case FileBytes::Failure::Read:
        return failed(ConfigLoadError::Read, "Error reading file: " + file.reason, box::OkOnly);
    case FileBytes::Failure::None: break;
    }
    return parseConfigFile(file.bytes, targetIsQVane);
}

std::optional<MessageBoxText> saveConfigFile(const std::string& path, const MemoryImage& image, bool twoAxis,
                                             const AtomicSaver& saver)
{
    const std::vector<uint8_t> bytes = configFileBytes(image, twoAxis);
    std::string error;
    if (saver.save(path, bytes, error)) return std::nullopt;
    return MessageBoxText{"Error writing backup file: " + error, std::string(kTitleWrite), box::OkOnly};
}

} // namespace kdx
