// `kdxctl sim --pty` end to end: the built program, a real pseudo-terminal, the wall
// clock. The only sim tests that take real time (about 3.5 s).
#include "sim_harness.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

using namespace kdx;
using namespace kdx::sim::test;

namespace {

// kdxctl sim --pty as a child: the shell prints the pid it then hands to kdxctl, and
// kdxctl's first line is the device.
class SimProcess {
public:
    explicit SimProcess(const std::string& options)
    {
        const std::string cmd = "echo $$; exec '" KDXCTL_PATH "' sim --pty " + options;
        pipe_ = ::popen(cmd.c_str(), "r");
        char line[256];
        if (pipe_ && std::fgets(line, sizeof line, pipe_)) pid_ = std::atoi(line);
        if (pid_ > 0 && std::fgets(line, sizeof line, pipe_)) path = std::string(line, std::strcspn(line, "\n"));
    }
    ~SimProcess()
    {
        if (pipe_) stop(SIGKILL);
    }
    // Sends the signal and returns the exit code (128 + signal if killed by it).
    int stop(int sig)
    {
        if (pid_ > 0) ::kill(pid_, sig);
        const int status = ::pclose(pipe_);
        pipe_ = nullptr;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    std::string path;

private:
    FILE* pipe_ = nullptr;
    pid_t pid_ = -1;
};

} // namespace

TEST(SimPty, ServesTelemetryInRealTimeAndAnswersPromptly)
{
    SimProcess sim("");
    ASSERT_EQ(sim.path.rfind("/dev/", 0), 0u) << "first line: '" << sim.path << "'";
    // Opened as a serial program would: raw, old input discarded.
    const int fd = ::open(sim.path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    ASSERT_GE(fd, 0);
    termios tio{};
    ::tcgetattr(fd, &tio);
    ::cfmakeraw(&tio);
    ::tcsetattr(fd, TCSANOW, &tio);
    ::tcflush(fd, TCIOFLUSH);

    Capture cap;
    Receiver rx(&cap);
    const auto t0 = std::chrono::steady_clock::now();
    auto since = [&] { return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count(); };
    double asked = -1;
    uint8_t buf[4096];
    while (since() < 3.3) {
        pollfd p{fd, POLLIN, 0};
        ::poll(&p, 1, 5);
        const ssize_t n = ::read(fd, buf, sizeof buf);
        cap.clock = since();
        if (n > 0) rx.receiveBytes(std::span<const uint8_t>(buf, static_cast<std::size_t>(n)));
        if (asked < 0 && cap.clock > 1.5) {
            const uint8_t read[] = {0x5A, 3, 112, 115};
            ASSERT_EQ(::write(fd, read, sizeof read), 4);
            asked = since();
        }
    }
    ::close(fd);

    ASSERT_FALSE(cap.cyclic.empty());
    int inThreeSeconds = 0;
    for (const auto& s : cap.cyclic) inThreeSeconds += s.t < cap.cyclic.front().t + 3.0;
    EXPECT_NEAR(inThreeSeconds, 300, 6) << "100 Hz within 2 %";
    EXPECT_EQ(cap.bad(), 0);
    ASSERT_EQ(cap.replies.size(), 1u);
    EXPECT_EQ(cap.replies[0].id, 120);
    EXPECT_LT(cap.replies[0].t - asked, 0.050) << "a read answered within 50 ms";
    EXPECT_EQ(sim.stop(SIGTERM), 0) << "exits cleanly on SIGTERM";
}

TEST(SimPty, InterruptEndsItCleanly)
{
    SimProcess sim("--qvane");
    ASSERT_FALSE(sim.path.empty());
    EXPECT_EQ(sim.stop(SIGINT), 0);
}
