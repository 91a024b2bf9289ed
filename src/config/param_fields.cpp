#include "config/param_fields.h"

#include "config/driver_config.h"
#include "core/host_numeric.h"

namespace kdx {

const ParamField* findParamField(std::string_view name)
{
    for (const ParamField& f : kParamFields)
        if (f.name == name) return &f;
    return nullptr;
}

const ParamField& fieldOfLabel(ParamLabel label)
{
    for (const ParamField& f : kParamFields)
        if (f.label == label && !f.reverse) return f;
    return kDebugIdField;
}

std::string fieldValue(const DriverConfig& config, const ParamField& field, int motor)
{
    if (field.reverse) return config.reverse(motor) ? "1" : "0";
    return config.caption(field.label, motor);
}

int fieldRaw(const MemoryImage& image, const ParamField& field, int motor)
{
    const auto at = [&](int k) {
        return lowByte(image[static_cast<std::size_t>(layout::MotorBlockSize * motor + field.offset + k)]);
    };
    return field.bytes == 2 ? at(0) + 256 * at(1) : at(0) & field.mask;
}

void copyField(MemoryImage& to, const MemoryImage& from, const ParamField& field, int motor)
{
    const int mask = field.bytes == 2 ? 0xFF : field.mask;
    for (int k = 0; k < field.bytes; ++k) {
        const auto i = static_cast<std::size_t>(layout::MotorBlockSize * motor + field.offset + k);
        to[i] = static_cast<int16_t>((lowByte(to[i]) & ~mask) | (lowByte(from[i]) & mask));
    }
}

} // namespace kdx
