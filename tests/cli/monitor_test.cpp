// kdxctl monitor runs in real time, so these run it for fractions of a second.
#include "cli/command.h"
#include "telemetry/cyclic_frames.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <sstream>
#include <unistd.h>

using namespace kdx;
using namespace kdx::test;

namespace {

struct Result {
    int exit;
    std::string out, err;
    std::vector<std::string> lines;
};

Result monitor(std::vector<std::string> args)
{
    std::ostringstream out, err;
    cli::CommandIo io{out, err};
    args.insert(args.begin(), "monitor");
    Result r{cli::runKdxctl(args, io), out.str(), err.str(), {}};
    for (std::size_t at = 0, end; (end = r.out.find("\r\n", at)) != std::string::npos; at = end + 2)
        r.lines.push_back(r.out.substr(at, end + 2 - at));
    return r;
}

} // namespace

TEST(MonitorCommand, SimulatedModulePrintsHeaderThenLiveLines)
{
    for (auto [option, header, prefix] :
         {std::tuple{"--simulate", kDirectHeader, ""}, {"--simulate=qvane", kRelayedHeader, "Tilt,0,"}}) {
        const Result r = monitor({option, "--seconds", "0.3"});
        EXPECT_EQ(r.exit, 0) << r.err;
        ASSERT_GE(r.lines.size(), 20u) << option; // 100 messages a second
        EXPECT_LE(r.lines.size(), 40u) << option;
        EXPECT_EQ(r.lines[0], header);
        for (std::size_t i = 1; i < r.lines.size(); ++i) EXPECT_EQ(r.lines[i].rfind(prefix, 0), 0u) << r.lines[i];
        EXPECT_NE(r.err.find("log lines " + std::to_string(r.lines.size() - 1) + "\n"), std::string::npos) << r.err;
    }
}

TEST(MonitorCommand, PortFailures)
{
    const Result missing = monitor({"--port", "/nonexistent/ttyX"});
    EXPECT_EQ(missing.err, "kdxctl: monitor: cannot open /nonexistent/ttyX: No such file or directory\n");
    EXPECT_EQ(missing.exit, 1);
    EXPECT_EQ(monitor({"--simulate", "--port", "/dev/null"}).exit, 2);

    // A silent line: the Tilt axis is asked for once a second, then the monitor fails.
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0) GTEST_SKIP() << "no pseudo-terminals";
    const Result r = monitor({"--port=" + std::string(::ptsname(master)), "--seconds=1.3"});
    EXPECT_EQ(r.exit, 1);
    EXPECT_NE(r.err.find("kdxctl: monitor: no cyclic telemetry received\n"), std::string::npos) << r.err;
    uint8_t buf[64];
    pollfd p{master, POLLIN, 0};
    const ssize_t n = ::poll(&p, 1, 0) > 0 ? ::read(master, buf, sizeof buf) : 0;
    EXPECT_EQ(std::vector<uint8_t>(buf, buf + std::max<ssize_t>(n, 0)), (std::vector<uint8_t>{0x5A, 0x03, 0x83, 0x86}));
    ::close(master);
}
