#pragma once
// Standard output that fails (a full disk, /dev/full) must not pass for success.
// Output is buffered, so a failure shows only once the stream is flushed.
#include <ostream>
#include <string_view>

namespace kdx::cli {

inline constexpr std::string_view kOutputLost = "cannot write to standard output";

// Flushes `out`; true when everything written to it so far has reached it.
inline bool outputReached(std::ostream& out)
{
    out.flush();
    return !out.fail();
}

} // namespace kdx::cli
