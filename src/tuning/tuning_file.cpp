#include "tuning/tuning_file.h"

#include "core/host_error.h"
#include "core/host_numeric.h"
#include "core/read_file.h"
#include "tuning/item_reader.h"
#include "tuning/tuning_texts.h"

namespace kdx {

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr const char* kNumberPattern = "0.00";
constexpr int kHeaderItems = 11;
constexpr int kSpareItems = 2;

void appendNumber(std::string& out, double v) { out += Format(v, kNumberPattern); }

class PastEnd {};

double nextItem(ItemReader& reader)
{
    const std::optional<double> v = reader.next();
    if (!v) throw PastEnd{};
    return *v;
}

} // namespace

std::string tuningFileText(const TraceBuffer& traces, int lastIndex, const GainSet& gains)
{
    at(traces.RateTrace, lastIndex);
    std::string out;
    out.reserve(static_cast<std::size_t>(lastIndex + 2) * 14 + 128);
    out += tuning_text::FileHeader;
    out += kLineEnd;
    for (int i = 0; i <= lastIndex; ++i) {
        appendNumber(out, traces.RateTrace[i]);
        out += ',';
        appendNumber(out, traces.ErrorTrace[i]);
        if (i == 0) {
            for (Gain g : kAllGains) {
                out += ',';
                appendNumber(out, gains[g]);
            }
            out += ",0,0";
        }
        out += kLineEnd;
    }
    return out;
}

TuningFileLoad readTuningFile(std::span<const uint8_t> bytes, TraceBuffer& traces,
                              const std::function<void()>& resetTrace)
{
    TuningFileLoad result;
    ItemReader reader(bytes);
    try {
        for (int k = 0; k < kHeaderItems; ++k) nextItem(reader);
        result.headerRead = true;
        if (resetTrace) resetTrace();

        traces.RateTrace[0] = toSingle(nextItem(reader));
        traces.ErrorTrace[0] = toSingle(nextItem(reader));
        GainSet gains;
        for (Gain g : kAllGains) gains[g] = toSingle(nextItem(reader));
        for (int k = 0; k < kSpareItems; ++k) nextItem(reader);

        int16_t index = 0;
        for (;;) {
            const float rate = toSingle(nextItem(reader));
            if (reader.eof()) break;
            const float error = toSingle(nextItem(reader));
            if (reader.eof()) break;
            // Beyond index 6000 the subscript error ends the load.
            at(traces.RateTrace, index) = rate;
            traces.ErrorTrace[index] = error;
            index = checked16(index + 1);
            result.pairsStored = index;
        }
        result.gains = gains;
        result.complete = true;
    } catch (const PastEnd&) {
    } catch (const HostError&) {
    }
    return result;
}

std::string tuningFileReadError(const std::string& path, std::string_view reason)
{
    return std::string(tuning_file::ReadErrorPrefix) + path + ": " + std::string(reason);
}

std::optional<std::string> readTuningFileBytes(const std::string& path, std::vector<uint8_t>& bytes)
{
    FileBytes file = readFileBytes(path, tuning_file::MaxBytes);
    if (!file.ok()) return tuningFileReadError(path, file.reason);
    bytes = std::move(file.bytes);
    return std::nullopt;
}

} // namespace kdx
