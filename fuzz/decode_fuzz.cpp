// Recordings through `kdxctl decode`: the input is the recording's bytes, written to a
// temporary file and decoded by the command itself (file reading in large blocks, the
// receiver, both decoders, the log text, the counts).
//
// Checked: every recording with telemetry decodes (exit code 0), and the log is exactly
// what the receiver and the log stream make of the same bytes arriving one at a time, so
// the block size never changes a line; one without telemetry fails (exit code 1) and
// writes no log.
#include "cli/command.h"
#include "fuzz_support.h"
#include "link/receiver.h"
#include "telemetry/telemetry_log_stream.h"

#include <cstdio>
#include <sstream>
#include <string>

namespace {

using namespace kdx;

[[noreturn]] void fail(const char* what) { fuzz::fail("decode", what); }

// The log, or nothing when the recording holds no telemetry line.
std::string decodeByteByByte(const uint8_t* data, std::size_t size)
{
    TelemetryLogStream log;
    Receiver rx(&log);
    for (std::size_t i = 0; i < size; ++i) rx.receiveBytes(std::span<const uint8_t>(data + i, 1));
    if (log.lines() == 0) return {};
    log.ensureHeader();
    return log.text();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    const std::string path = fuzz::writeScratchFile("input.rec", {data, size});

    std::ostringstream out, err;
    cli::CommandIo io{out, err};
    const int rc = cli::runKdxctl({"decode", path}, io);
    const std::string expected = decodeByteByByte(data, size);
    if (expected.empty()) {
        if (rc != 1 || !out.str().empty() || err.str().rfind("kdxctl: decode: no telemetry in ", 0) != 0)
            fail("a recording without telemetry did not fail as it should");
        return 0;
    }
    if (rc != 0) {
        std::fprintf(stderr, "%s", err.str().c_str());
        fail("a recording did not decode");
    }
    if (out.str() != expected) fail("the log depends on how the bytes arrive");
    if (err.str().rfind("decode: bytes " + std::to_string(size) + ",", 0) != 0) fail("the byte count is wrong");
    return 0;
}
