// Boxes raised on the receive, telemetry, playback and timer paths open only once the
// handler has returned, and telemetry goes on arriving while they are open.
#include "fakes/file_size_limit.h"
#include "fakes/program_rig.h"
#include "telemetry/telemetry_setup_window.h"
#include "tuning/graph_win_window.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLabel>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include <sys/wait.h>
#include <unistd.h>

using namespace kdx;
using namespace kdx::test;

namespace {

// The program with its logging and tuning windows, the link's watchdog wired to the latter.
struct Program : ProgramRig {
    QTemporaryDir dir;
    const std::vector<uint8_t> cyclic = buildFrame(121, std::vector<uint8_t>(45, 0));

    Program() { logging.LogFileName->setText(dir.filePath("Run1.csv")); }
};

} // namespace

TEST(PostedBoxWindow, BoxesFromHandlersOpenAfterThemAndTelemetryFlowsWhileTheyAreOpen)
{
    std::unique_ptr<FileSizeLimit> diskFull;
    struct Case {
        const char* fault;
        std::function<void(Program&)> setUp, raise; // raise: the one handler that meets the fault
        std::string title;
    };
    const Case cases[] = {
        {"a write to the port fails on the test timer", [](Program& p) { p.port.failWrites = true; },
         [](Program& p) { p.main.TestTmr_Timer(); }, "Comms Port"},
        {"telemetry stops while unwritten gains are in use",
         [](Program& p) { p.main.gainStore().PutP(120, 0), p.port.deliver(p.cyclic), p.comms.CommsTimeout_Timer(); },
         [](Program& p) { p.comms.CommsTimeout_Timer(); }, "KDX Disconnected"},
        {"the disk fills under the log",
         [&](Program& p) {
             p.logging.StartLog_Click(); // the header written, the file may not grow any more
             diskFull = std::make_unique<FileSizeLimit>(QFileInfo(p.logging.LogFileName->text()).size());
             p.port.deliver(p.cyclic);
         },
         [&](Program& p) {
             p.clock.setSeconds(1); // the line waiting is due for the disk
             p.port.deliver(p.cyclic);
             diskFull.reset();
         },
         "File Write"},
        // A process's memory map reads in parts, and fails once the process is gone.
        {"a recording fails to read part way",
         [](Program& p) {
             const pid_t child = fork();
             if (child == 0) pause(), _exit(0);
             p.comms.SetInputFilename("/proc/" + std::to_string(child) + "/smaps");
             p.comms.StartLogIn_Click();
             kill(child, SIGKILL);
             waitpid(child, nullptr, 0);
         },
         [](Program& p) {
             for (int tick = 0; tick < 100000 && p.comms.PlaybackActive; ++tick) p.comms.FileInputTimer_Timer();
         },
         "File Open"},
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
