#include "config/startup.h"

#include <algorithm>
#include <cctype>

namespace kdx {

namespace {

constexpr std::string_view kTuningModifiedPrompt =
    "The Tuning Window data has been modified but not updated to the configuration data. Still Quit ?";
constexpr std::string_view kSettingsModifiedPrompt =
    "The current settings been modified but not written to the KDX module. Still Quit ?";
// Both questions carry this title.
constexpr std::string_view kQuitTitle = "Tuning Data Modified";

bool equalsIgnoringCase(std::string_view a, std::string_view b)
{
    return std::ranges::equal(a, b, [](char x, char y) {
        return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
    });
}

} // namespace

void applyStartupDefaults(DriverConfig& config)
{
    for (int i = 0; i <= LastUnreadByte; ++i) config.image()[static_cast<std::size_t>(i)] = 255;
    ParamSet& p = config.params();
    p.PwmFreqHz = {8000, 8000};
    p.GainPerc = {100, 100};
    p.DriveRatio = {1, 1};
    p.PTerm = {100, 100};
    p.IRate = {5, 5};
    p.DTerm = {20, 20};
    p.DynamicPower = {30, 30};
    p.IAngle = {4, 4};
    p.PowerErrorAngle = {4, 4};
    p.RecoveryAngle = {5, 5};
    p.Poles = {14, 14};
}

StartupFile classifyCommandLine(const std::string& commandLine)
{
    if (commandLine.size() <= 3) return {};
    StartupFile file;
    file.path = commandLine.substr(1, commandLine.size() - 2);
    const std::string_view ext = std::string_view(file.path).substr(file.path.size() >= 3 ? file.path.size() - 3 : 0);
    if (ext == ConfigFileExtension) file.kind = StartupFileKind::Configuration;
    else if (ext == TuningFileExtension) file.kind = StartupFileKind::TuningFile;
    else if (equalsIgnoringCase(ext, ConfigFileExtension) || equalsIgnoringCase(ext, TuningFileExtension))
        file.kind = StartupFileKind::Ignored;
    else file.kind = StartupFileKind::Recording;
    return file;
}

std::optional<QuitQuestion> quitQuestion(bool tuningDataModified, bool configModified)
{
    if (tuningDataModified) return QuitQuestion{kTuningModifiedPrompt, kQuitTitle};
    if (configModified) return QuitQuestion{kSettingsModifiedPrompt, kQuitTitle};
    return std::nullopt;
}

} // namespace kdx
