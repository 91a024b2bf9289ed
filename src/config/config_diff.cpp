#include "config/config_diff.h"

#include "config/driver_config.h"
#include "config/param_fields.h"
#include "core/host_numeric.h"

#include <array>

namespace kdx {

namespace {

// The bytes of a motor block that no parameter shows, and the bits of each that count.
struct ReservedByte {
    int offset;
    int mask;
};
constexpr std::array<ReservedByte, 9> kReservedBytes{{
    {0, 0xFF},
    {1, 0xFF},
    {15, 0xFF},
    {layout::AxisFlags, 0x7C},
    {25, 0xFF},
    {26, 0xFF},
    {27, 0xFF},
    {28, 0xFF},
    {29, 0xFF},
}};

DriverConfig shown(const ConfigSnapshot& s)
{
    DriverConfig config;
    config.image() = s.image;
    config.ImageToParams();
    return config;
}

int byteAt(const MemoryImage& image, int block, int offset)
{
    return lowByte(image[static_cast<std::size_t>(layout::MotorBlockSize * block + offset)]);
}

} // namespace

std::vector<ParamDifference> diffConfigs(const ConfigSnapshot& a, const ConfigSnapshot& b, int motor)
{
    const DriverConfig configA = shown(a), configB = shown(b);
    // Pairs of blocks compared: (block of a, block of b, motor reported).
    std::vector<std::array<int, 3>> pairs;
    if (a.twoAxis && b.twoAxis) {
        pairs = {{0, 0, 0}, {1, 1, 1}};
    } else {
        const int blockA = a.twoAxis ? motor : 0, blockB = b.twoAxis ? motor : 0;
        pairs = {{blockA, blockB, a.twoAxis || b.twoAxis ? motor : 0}};
    }
    std::vector<ParamDifference> out;
    for (const auto& [blockA, blockB, reported] : pairs) {
        for (const ParamField& field : kParamFields) {
            const int rawA = fieldRaw(a.image, field, blockA), rawB = fieldRaw(b.image, field, blockB);
            if (rawA == rawB) continue;
            ParamDifference d{std::string(field.name), reported, fieldValue(configA, field, blockA),
                              fieldValue(configB, field, blockB)};
            if (d.a == d.b) {
                d.a += " (raw " + std::to_string(rawA) + ")";
                d.b += " (raw " + std::to_string(rawB) + ")";
            }
            out.push_back(std::move(d));
        }
        for (const ReservedByte& r : kReservedBytes) {
            const int byteA = byteAt(a.image, blockA, r.offset) & r.mask;
            const int byteB = byteAt(b.image, blockB, r.offset) & r.mask;
            if (byteA == byteB) continue;
            const bool debugId = r.offset == layout::DebugId && blockA == 0 && blockB == 0;
            out.push_back({debugId ? std::string(kDebugIdField.name) : "Byte" + std::to_string(r.offset), reported,
                           std::to_string(byteA), std::to_string(byteB)});
        }
    }
    return out;
}

} // namespace kdx
