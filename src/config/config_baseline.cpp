#include "config/config_baseline.h"

#include "core/host_error.h"

#include <optional>

namespace kdx {

namespace {

bool valueDiffers(const DriverConfig& a, const DriverConfig& b, const ParamField& field, int motor)
{
    if (field.reverse) return a.reverse(motor) != b.reverse(motor);
    return a.value(field.label, motor) != b.value(field.label, motor);
}

// The image a write of `config` sends, or nothing when the write would stop on a host
// error (then every changed value counts as stored otherwise).
std::optional<MemoryImage> writtenImage(const DriverConfig& config)
{
    DriverConfig copy = config;
    copy.setRefreshHandler({});
    copy.setDataModifiedHandler({});
    try {
        copy.ParamsToImage();
    } catch (const HostError&) {
        return std::nullopt;
    }
    return copy.image();
}

DriverConfig readFrom(const MemoryImage& image)
{
    DriverConfig config;
    config.image() = image;
    config.ImageToParams();
    return config;
}

} // namespace

void ConfigBaseline::take(const MemoryImage& reported)
{
    reported_ = readFrom(reported);
    image_ = reported;
    taken_ = true;
}

std::vector<ChangedParam> ConfigBaseline::changes(const DriverConfig& shown) const
{
    std::vector<ChangedParam> out;
    if (!taken_) return out;
    const std::optional<MemoryImage> written = writtenImage(shown);
    forEachShownParam([&](const ParamField& field, int m) {
        if (!valueDiffers(shown, reported_, field, m)) return;
        const std::string reported = fieldValue(reported_, field, m);
        // A write never sends the debug identifier: only its label tells.
        const bool storedOtherwise =
            &field != &kDebugIdField && (!written || fieldRaw(*written, field, m) != fieldRaw(image_, field, m));
        if (storedOtherwise || fieldValue(shown, field, m) != reported) out.push_back({&field, m, reported});
    });
    return out;
}

MemoryImage imageOnScreen(const DriverConfig& shown)
{
    MemoryImage out = shown.image();
    const DriverConfig held = readFrom(shown.image());
    if (const std::optional<MemoryImage> written = writtenImage(shown)) {
        forEachShownParam([&](const ParamField& field, int m) {
            if (&field != &kDebugIdField && valueDiffers(shown, held, field, m)) copyField(out, *written, field, m);
        });
    }
    out[layout::DebugId] = shown.debugId();
    return out;
}

} // namespace kdx
