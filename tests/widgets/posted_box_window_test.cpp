// Boxes raised on the receive, telemetry, playback and timer paths open only once the
// handler has returned, and telemetry goes on arriving while they are open.
#include "fakes/program_rig.h"
#include "telemetry/telemetry_setup_window.h"
#include "tuning/graph_win_window.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLabel>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <csignal>
#include <functional>

#ifdef __linux__
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

using namespace kdx;
using namespace kdx::test;

namespace {

// The program with its logging and tuning windows, the link's watchdog wired to the latter.
struct Program : ProgramRig, LinkLossListener {
    QTemporaryDir dir;
    double now = 0;
    GraphWin graph{ws};
    TelemetrySetup logging{dialogs, [this] { return now; }};
    const std::vector<uint8_t> cyclic = buildFrame(121, std::vector<uint8_t>(45, 0));

    Program()
    {
        ws.graph = &graph;
        ws.logging = &logging;
        comms.setLinkLossListener(this);
        logging.LogFileName->setText(dir.filePath("Run1.csv"));
    }
    void PutCommsJustWentBad() override { graph.PutCommsJustWentBad(); }
};

struct Case {
    const char* fault;
    std::function<void(Program&)> setUp; // everything up to the fault
    std::function<void(Program&)> raise; // the one handler that meets it
    std::string title;
};

#ifdef __linux__
// The log's file may not grow past what it holds: the next write fails as on a full disk.
struct FileSizeLimit {
    rlimit old{};
    void (*oldHandler)(int) = nullptr;
    void hold(off_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &old);
        oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        rlimit tight = old;
        tight.rlim_cur = static_cast<rlim_t>(bytes);
        setrlimit(RLIMIT_FSIZE, &tight);
    }
    void release()
    {
        setrlimit(RLIMIT_FSIZE, &old);
        std::signal(SIGXFSZ, oldHandler);
    }
};
#endif

} // namespace

TEST(PostedBoxWindow, BoxesFromHandlersOpenAfterThemAndTelemetryFlowsWhileTheyAreOpen)
{
#ifdef __linux__
    FileSizeLimit limit;
    pid_t child = -1;
#endif
    std::vector<Case> cases = {
        {"a write to the port fails on the test timer", [](Program& p) { p.port.failWrites = true; },
         [](Program& p) { p.main.TestTmr_Timer(); }, "Comms Port"},
        {"telemetry stops while unwritten gains are in use",
         [](Program& p) {
             p.main.gainStore().PutP(120, 0);
             p.port.deliver(p.cyclic);
             p.comms.CommsTimeout_Timer();
         },
         [](Program& p) { p.comms.CommsTimeout_Timer(); }, "KDX Disconnected"},
#ifdef __linux__
        {"the disk fills under the log",
         [&](Program& p) {
             p.logging.StartLog_Click();
             limit.hold(static_cast<off_t>(QFileInfo(p.logging.LogFileName->text()).size()));
             p.port.deliver(p.cyclic);
         },
         [&](Program& p) {
             p.now = 1; // the line waiting is due for the disk
             p.port.deliver(p.cyclic);
             limit.release();
         },
         "File Write"},
        // A process's memory map reads in parts and fails once the process is gone.
        {"a recording fails to read part way",
         [&](Program& p) {
             child = fork();
             if (child == 0) {
                 pause();
                 _exit(0);
             }
             p.comms.SetInputFilename("/proc/" + std::to_string(child) + "/smaps");
             p.comms.StartLogIn_Click();
             kill(child, SIGKILL);
             waitpid(child, nullptr, 0);
         },
         [](Program& p) {
             for (int tick = 0; tick < 100000 && p.comms.PlaybackActive; ++tick) p.comms.FileInputTimer_Timer();
         },
         "File Open"},
#endif
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.fault);
        Program p;
        c.setUp(p);
        ASSERT_TRUE(p.dialogs.boxes.empty());
        uint64_t decodedWhileOpen = 0;
        p.dialogs.whileOpen = [&](const ShownBox&) {
            const uint64_t before = p.comms.receiver().goodMessages;
            for (int n = 0; n < 3; ++n) p.port.deliver(p.cyclic);
            decodedWhileOpen = p.comms.receiver().goodMessages - before;
        };
        c.raise(p);
        EXPECT_TRUE(p.dialogs.boxes.empty()) << "opened inside the handler";
        QCoreApplication::sendPostedEvents(); // the event loop, once the handler has returned
        ASSERT_EQ(p.dialogs.boxes.size(), 1u);
        EXPECT_EQ(p.dialogs.boxes[0].title, c.title) << p.dialogs.boxes[0].prompt;
        EXPECT_EQ(decodedWhileOpen, 3u);
    }
}
