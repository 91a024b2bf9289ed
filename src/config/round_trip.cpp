#include "config/round_trip.h"

#include "core/host_numeric.h"

namespace kdx {

namespace {

// The image as the module holds it: one byte per element.
MemoryImage asStored(const MemoryImage& image)
{
    MemoryImage bytes = image;
    for (auto& e : bytes) e = static_cast<int16_t>(lowByte(e));
    return bytes;
}

// The configuration a memory read of `stored` gives.
DriverConfig readFrom(const MemoryImage& stored)
{
    DriverConfig config;
    config.image() = stored;
    config.ImageToParams();
    return config;
}

std::string withUnit(const std::string& value, std::string_view unit)
{
    return unit.empty() ? value : value + " " + std::string(unit);
}

} // namespace

int rewrittenRaw(const MemoryImage& image, const ParamField& field, int motor)
{
    DriverConfig config = readFrom(asStored(image));
    config.ParamsToImage();
    return fieldRaw(asStored(config.image()), field, motor);
}

RoundTrip checkRoundTrip(const DriverConfig& config, const EntryCommand& command, int motor, float value)
{
    RoundTrip r;
    DriverConfig entered = config;
    entered.setRefreshHandler({});
    entered.setDataModifiedHandler({});
    if (!applyEntry(entered, command, motor, value)) return r;
    r.accepted = true;
    r.shown = entered.caption(command.label, motor);
    // The frequency label shows whole kHz and the axis label a name: the number typed
    // says more.
    const bool labelHidesValue = command.label == ParamLabel::Freqtb || command.label == ParamLabel::Axistb;
    r.entered = labelHidesValue ? Format(value, "0.00") : r.shown;

    entered.ParamsToImage();
    const MemoryImage stored = asStored(entered.image());
    r.readBack = readFrom(stored).caption(command.label, motor);
    const ParamField& field = fieldOfLabel(command.label);
    const int block = command.target == EntryTarget::DebugId ? 0 : motor;
    r.stored = fieldRaw(stored, field, block);
    r.rewritten = rewrittenRaw(stored, field, block);

    const std::string what = std::string(field.meaning) + " " + withUnit(r.entered, field.unit);
    if (r.changes()) r.warning = what + " will read back as " + withUnit(r.readBack, field.unit);
    else if (r.drifts())
        r.warning = what + " is stored as " + std::to_string(r.stored) +
                    ", which a read and a write with no edit change to " + std::to_string(r.rewritten);
    return r;
}

} // namespace kdx
