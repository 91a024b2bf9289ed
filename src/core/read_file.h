#pragma once
// Reading a whole file the user named, with the operating system's error codes. Nothing
// is thrown, whatever the path turns out to be: a folder, a device whose read fails, a
// file that vanished or is too large to be one of ours.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kdx {

struct FileBytes {
    enum class Failure { None, Open, Read };
    Failure failure = Failure::None;
    std::string reason;         // the operating system's description, e.g. "Is a directory"
    std::vector<uint8_t> bytes; // the whole file when failure is None

    bool ok() const { return failure == Failure::None; }
};

// Reads `path` (as the platform's fopen takes it) from its first byte to its end. A file
// longer than `maxBytes` is a Read failure with the reason "File too large".
FileBytes readFileBytes(const std::string& path, std::size_t maxBytes);

} // namespace kdx
