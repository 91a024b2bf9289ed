#pragma once
// What the program settles before any module is heard: the configuration it shows until
// the first read or load, what the file named on its command line is, and what it asks
// before it quits with unsaved changes.
#include "config/driver_config.h"

#include <optional>
#include <string>
#include <string_view>

namespace kdx {

// The memory image's first bytes (0 .. LastUnreadByte) read 255 until a read or a load,
// so nothing looks read back; the parameters take working values: 8 kHz PWM, a gain
// factor of 1.0 (100 %), 1:1 drive, and a mid-range loop for a 14-pole motor.
inline constexpr int LastUnreadByte = 60;
void applyStartupDefaults(DriverConfig& config);

// The file on the command line, told by the last three characters of its name. The test
// is case-sensitive: "KDX" or "Btf" names neither kind, nor a recording, and is ignored.
inline constexpr std::string_view ConfigFileExtension = "kdx";
inline constexpr std::string_view TuningFileExtension = "btf";
enum class StartupFileKind {
    None,          // no file (a command line of three characters or fewer)
    Configuration, // loaded into the main window
    TuningFile,    // loaded into the tuning window
    Recording,     // any other extension: a recorded byte stream to play back
    Ignored,       // a known extension in the wrong case
};
struct StartupFile {
    StartupFileKind kind = StartupFileKind::None;
    std::string path;
};
// `commandLine` holds one path in double quotes: the path is the text between its first
// and last character, whatever they are.
StartupFile classifyCommandLine(const std::string& commandLine);

// The one question asked before quitting: unsaved tuning data first, unwritten settings
// second, at most one. None: quit without asking. A Yes (YesNo box) quits.
struct QuitQuestion {
    std::string_view prompt;
    std::string_view title;
};
std::optional<QuitQuestion> quitQuestion(bool tuningDataModified, bool configModified);

} // namespace kdx
