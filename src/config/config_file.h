#pragma once
// Configuration files (".kdx" two-axis, ".bls" single-axis): 36-byte text records of
// 34 characters plus CR LF. A header record, then data records "*" + 16 bytes of the
// memory image as two hex digits each + "*"; record r holds elements 16r .. 16r + 15.
// Records whose second character is "!" are comments.
//
// Loading is two steps so the window can ask its question in between:
// parseConfigFile() checks the bytes and says what to show or ask; applyConfigLoad()
// copies into the image. Nothing changes the image unless the load succeeded.
#include "config/memory_image.h"
#include "core/atomic_file.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kdx {

namespace configfile {
inline constexpr std::string_view Header = "*!    VELMOR KDX Backup File     *";
inline constexpr int RecordBytes = 36; // 34 characters + CR LF
inline constexpr int RecordChars = 34;
inline constexpr int ValuesPerRecord = 16;
inline constexpr int TwoAxisRecords = 4;    // elements 0 .. 63
inline constexpr int SingleAxisRecords = 2; // elements 0 .. 31
inline constexpr int MaxValues = 501;       // the load buffer; later values are not kept

inline constexpr std::string_view SaveFilterDirect =
    "Two-Axis Brushless Driver Files (*.kdx)|*.kdx|All Files (*.*)|*.*";
inline constexpr std::string_view SaveFilterQVane =
    "Single-Axis Brushless Driver Files (*.bls)|*.bls|All Files (*.*)|*.*";
inline constexpr std::string_view LoadFilterQVane =
    "Single-Axis Brushless Driver Files (*.bls)|*.bls|Two-Axis Brushless Driver Files "
    "(*.kdx)|*.kdx|All Files (*.*)|*.*";
inline constexpr std::string_view LoadFilterDirect =
    "Two-Axis Brushless Driver Files (*.kdx)|*.kdx|All Files (*.*)|*.*";
inline constexpr std::string_view ExtDirect = "kdx";
inline constexpr std::string_view ExtQVane = "bls";
inline constexpr std::string_view DefaultFileName = "Wibbly.kdx";

// Asked before a load (Yes/No, style 4).
inline constexpr std::string_view ConfirmLoadPrompt = "This will overwrite the current configuration. Are you sure ?";
inline constexpr std::string_view ConfirmLoadTitle = "Confirm File Load";
} // namespace configfile

// A message box as the window shows it: text, title and the system's style number.
struct MessageBoxText {
    std::string prompt;
    std::string title;
    int style = 0;
};

enum class ConfigLoadStatus {
    Loaded,   // ready: applyConfigLoad(load, image)
    AskMotor, // a two-axis file for a Q-Vane: ask `box`; No -> applyConfigLoad(load, image, true)
    Failed,   // show `box`; the image must not change
};

enum class ConfigLoadError { None, Open, Read, InvalidFormat, Insufficient };

struct ConfigLoad {
    ConfigLoadStatus status = ConfigLoadStatus::Failed;
    ConfigLoadError error = ConfigLoadError::None;
    MessageBoxText box;          // the error to show, or the two-motor question
    int dataRecords = 0;         // data records counted (comments excluded)
    int errorLine = 0;           // InvalidFormat: the record's line number, from 1
    int firstNonHexLine = 0;     // the first data record with other than hex digits between its
                                 // "*"s (read as Val reads them, blanks as 0); 0: none
    std::vector<int16_t> values; // 16 per well-formed data record, at most MaxValues

    bool twoAxis() const { return dataRecords == configfile::TwoAxisRecords; }
};

// AxisName: 0 "Tilt", 1 "Roll", 2 "Pan", anything else "None".
std::string AxisName(int axis);

// The file's bytes for an image: header and 4 data records (two-axis, elements 0 .. 63)
// or 2 (single-axis, elements 0 .. 31). Each element is written as the byte that goes
// to the module, its low 8 bits, so an element left above 255 still makes a valid file.
std::vector<uint8_t> configFileBytes(const MemoryImage& image, bool twoAxis);

// Checks a file's bytes. Never throws, whatever the bytes. Accepted: exactly 4 data
// records (two-axis) or exactly 2 (single-axis), in either target mode. A two-axis file
// loaded for a Q-Vane (targetIsQVane) asks which motor to load.
ConfigLoad parseConfigFile(std::span<const uint8_t> bytes, bool targetIsQVane);

// Copies a Loaded or AskMotor result into the image: a two-axis file fills elements
// 0 .. 63, or, with secondMotor (the answer No), its elements 30 .. 59 go to 0 .. 29
// and the rest of the image stays; a single-axis file fills elements 0 .. 31 (its
// elements 30 and 31 are not used through a Q-Vane). Returns false, changing nothing,
// for a Failed result.
bool applyConfigLoad(const ConfigLoad& load, MemoryImage& image, bool secondMotor = false);

// Reads a file and parses it; a file that cannot be opened or read gives Failed with
// the "Error opening config file: " / "Error reading file: " box.
ConfigLoad loadConfigFile(const std::string& path, bool targetIsQVane);

// Saves atomically. Returns the box to show ("Error writing backup file: ...", title
// "File Write") on failure, nothing on success.
std::optional<MessageBoxText> saveConfigFile(const std::string& path, const MemoryImage& image, bool twoAxis,
                                             const AtomicSaver& saver = PlainSaver);

} // namespace kdx
