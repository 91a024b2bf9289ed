#pragma once
// The main window's parameter labels, one per parameter and motor (control arrays
// indexed 0 and 1), and the order in which RefreshParamDisplay sets them.
#include <array>
#include <string_view>

namespace kdx {

enum class ParamLabel {
    PTermtb,
    IAngletb,
    IRatetb,
    DTermtb,
    Powertb,
    PowerHitb,
    PowerErrortb,
    Freqtb,
    Gaintb,
    RecoveryAngletb,
    Polestb,
    Ratiotb,
    Axistb,
    FPTrimtb,
    DTermLimittb, // entered like the others, but the refresh never sets its caption
    DebIDtb,      // one label, not per motor: the copy of image element 0
};

// The controls RefreshParamDisplay sets, in its order, for motor 0 then motor 1.
constexpr std::array<ParamLabel, 14> kRefreshOrder{
    ParamLabel::PTermtb, ParamLabel::IAngletb,        ParamLabel::IRatetb,      ParamLabel::DTermtb,
    ParamLabel::Powertb, ParamLabel::PowerHitb,       ParamLabel::PowerErrortb, ParamLabel::Freqtb,
    ParamLabel::Gaintb,  ParamLabel::RecoveryAngletb, ParamLabel::Polestb,      ParamLabel::Ratiotb,
    ParamLabel::Axistb,  ParamLabel::FPTrimtb};

// The control's object name ("PTermtb").
constexpr std::string_view labelName(ParamLabel label)
{
    constexpr std::array<std::string_view, 16> names{
        "PTermtb", "IAngletb",        "IRatetb", "DTermtb", "Powertb", "PowerHitb", "PowerErrortb", "Freqtb",
        "Gaintb",  "RecoveryAngletb", "Polestb", "Ratiotb", "Axistb",  "FPTrimtb",  "DTermLimittb", "DebIDtb"};
    return names[static_cast<std::size_t>(label)];
}

} // namespace kdx
