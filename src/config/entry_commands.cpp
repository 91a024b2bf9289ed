#include "config/entry_commands.h"

#include "core/host_numeric.h"

namespace kdx {

const EntryCommand* findEntryCommand(ParamLabel label)
{
    for (const EntryCommand& c : kEntryCommands)
        if (c.label == label) return &c;
    return nullptr;
}

std::string askValueDefault(float current) { return Format(current, "0.00"); }

float AskValueResult(float current, std::string_view answer)
{
    if (answer.empty()) return toSingle(Val(askValueDefault(current)));
    return toSingle(Val(answer));
}

float entryCurrentValue(const DriverConfig& config, const EntryCommand& command, int motor)
{
    const ParamSet& p = config.params();
    switch (command.target) {
    case EntryTarget::PTerm: return at(p.PTerm, motor);
    case EntryTarget::DTerm: return at(p.DTerm, motor);
    case EntryTarget::IAngle: return at(p.IAngle, motor);
    case EntryTarget::IRate: return at(p.IRate, motor);
    case EntryTarget::DTermLimit: return at(p.DTermLimit, motor);
    case EntryTarget::StaticPower: return at(p.StaticPower, motor);
    case EntryTarget::DynamicPower: return at(p.DynamicPower, motor);
    case EntryTarget::PowerErrorAngle: return toSingle(at(p.PowerErrorAngle, motor));
    // Offered in kHz, the unit the prompt asks for, so Cancel re-stores the same frequency.
    case EntryTarget::PwmFreqHz: return toSingle(at(p.PwmFreqHz, motor) / 1000.0);
    case EntryTarget::GainPerc: return at(p.GainPerc, motor);
    case EntryTarget::RecoveryAngle: return at(p.RecoveryAngle, motor);
    case EntryTarget::Poles: return at(p.Poles, motor);
    case EntryTarget::DriveRatio: return at(p.DriveRatio, motor);
    case EntryTarget::FixedPosTrim: return at(p.FixedPosTrim, motor);
    case EntryTarget::QVaneAxis: return at(p.QVaneAxis, motor);
    case EntryTarget::DebugId: return config.debugId();
    }
    return 0;
}

bool applyEntry(DriverConfig& config, const EntryCommand& command, int motor, float value)
{
    const bool inRange = value >= command.lower && value <= command.upper;
    if (inRange) {
        ParamSet& p = config.params();
        switch (command.target) {
        case EntryTarget::PTerm: at(p.PTerm, motor) = value; break;
        case EntryTarget::DTerm: at(p.DTerm, motor) = value; break;
        case EntryTarget::IAngle: at(p.IAngle, motor) = value; break;
        case EntryTarget::IRate: at(p.IRate, motor) = value; break;
        case EntryTarget::DTermLimit: at(p.DTermLimit, motor) = value; break;
        case EntryTarget::StaticPower: at(p.StaticPower, motor) = value; break;
        case EntryTarget::DynamicPower: at(p.DynamicPower, motor) = value; break;
        case EntryTarget::PowerErrorAngle: at(p.PowerErrorAngle, motor) = value; break;
        // kHz in, Hz kept; a 32-bit product, as the entry gives a 32-bit value.
        case EntryTarget::PwmFreqHz: at(p.PwmFreqHz, motor) = toSingle(value * 1000.0); break;
        case EntryTarget::GainPerc: at(p.GainPerc, motor) = value; break;
        case EntryTarget::RecoveryAngle: at(p.RecoveryAngle, motor) = value; break;
        case EntryTarget::Poles: at(p.Poles, motor) = value; break;
        case EntryTarget::DriveRatio: at(p.DriveRatio, motor) = value; break;
        case EntryTarget::FixedPosTrim: at(p.FixedPosTrim, motor) = value; break;
        case EntryTarget::QVaneAxis: at(p.QVaneAxis, motor) = value; break;
        case EntryTarget::DebugId: config.setDebugId(CInt(value)); break;
        }
        config.SetDataModified(true);
    }
    config.RefreshParamDisplay();
    return inRange;
}

} // namespace kdx
