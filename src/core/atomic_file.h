#pragma once
// Replacing a file the user keeps without ever leaving it half written: the bytes go to a
// temporary file beside the target, are flushed to the disk, and the temporary file is
// then renamed over the target. An interrupted save leaves the previous copy intact.
#include <cstdint>
#include <span>
#include <string>

namespace kdx {

// A step of a save that a test makes fail, as the system would: Create with "Permission
// denied" (a folder the user may not write to), Write with "No space left on device"
// after half the bytes went to the temporary file (a disk that fills), Sync and Rename
// with an input/output error (a lost mount).
enum class AtomicSaveFault { None, Create, Write, Sync, Rename };

// Writes `bytes` to `path` atomically. On failure returns false, leaves any existing
// file at `path` untouched, removes the temporary file, and puts the reason into
// `error` (the operating system's description, e.g. "Permission denied").
bool saveFileAtomically(const std::string& path, std::span<const uint8_t> bytes, std::string& error,
                        AtomicSaveFault fault = AtomicSaveFault::None);

// What the program's windows save their files with. The program's own never fails on
// purpose; a test gives the windows one whose `fault` it sets.
struct AtomicSaver {
    AtomicSaveFault fault = AtomicSaveFault::None;
    bool save(const std::string& path, std::span<const uint8_t> bytes, std::string& error) const
    {
        return saveFileAtomically(path, bytes, error, fault);
    }
};
// The saver of everything outside the tests.
inline constexpr AtomicSaver PlainSaver{};

} // namespace kdx
