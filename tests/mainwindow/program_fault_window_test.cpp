// Faults the whole program meets, with the simulated module behind the fake port and the
// program's timers called at their moments of simulated time: the module restarting into
// its bootloader, a save that fails half-way, a log on a disk that fills.
#include "core/atomic_file.h"
#include "fakes/file_size_limit.h"
#include "fakes/program_rig.h"
#include "sim/simulator.h"
#include "telemetry/telemetry_log_stream.h"
#include "tuning/graph_win_model.h"

#include <QDir>
#include <QLabel>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

using namespace kdx;
using namespace kdx::test;

namespace {

std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// The program as kdxtool's main() wires it, talking to a simulated module, on
// simulated time.
struct Program : ProgramRig, LinkLossListener {
    sim::Simulator module;
    std::vector<uint8_t> heard; // every byte the module sent
    int losses = 0;

    explicit Program(bool qvane) : module({.qvane = qvane, .seed = 7})
    {
        comms.setLinkLossListener(this); // counts the losses, then tells the tuning window
    }
    void PutCommsJustWentBad() override
    {
        ++losses;
        graph.PutCommsJustWentBad();
    }
    // Module and program side by side for `seconds`, in 10 ms steps.
    void run(double seconds)
    {
        std::vector<uint8_t> out;
        for (long steps = std::lround(seconds * 100); steps > 0; --steps) {
            module.consume(port.written);
            port.written.clear();
            out.clear();
            module.advance(0.01, out);
            heard.insert(heard.end(), out.begin(), out.end());
            if (port.isOpen()) port.deliver(out, 61);
            advance(10);
        }
    }
};

} // namespace

TEST(ProgramFaultWindow, BootloaderRestartWarnsAsWrittenAndTelemetryResumesByItself)
{
    enum class Edit { None, TunedGain, UnwrittenParameter };
    for (bool qvane : {false, true}) {
        for (Edit edit : {Edit::None, Edit::TunedGain, Edit::UnwrittenParameter}) {
            SCOPED_TRACE(testing::Message() << (qvane ? "Q-Vane" : "direct") << ", edit " << int(edit));
            Program p(qvane);
            p.run(2.0);
            ASSERT_TRUE(p.comms.GetCommsGood());
            ASSERT_TRUE(p.main.GetGainsHaveBeenLoaded()) << "the first telemetry read the configuration";
            if (edit == Edit::TunedGain) {
                p.graph.MotorSelcb_Click(0);
                p.graph.Inccb_Click(Gain::P, 0); // and the tuned gains go to the module
                ASSERT_TRUE(p.graph.GetDataModified());
            } else if (edit == Edit::UnwrittenParameter) {
                p.dialogs.inputs.push_back("70");
                p.main.ParamLabel_Click(ParamLabel::PTermtb, 0);
                ASSERT_TRUE(p.main.GetDataModified());
            }
            const std::size_t boxesBefore = p.dialogs.boxes.size();

            p.main.RestartIntoBootloader();
            p.run(0.4);
            EXPECT_TRUE(p.comms.GetCommsGood()) << "no tick has passed without telemetry yet";
            p.run(0.6); // the first tick that saw no telemetry has come
            EXPECT_FALSE(p.comms.GetCommsGood());
            EXPECT_EQ(p.losses, 1);
            if (edit == Edit::None) {
                EXPECT_EQ(p.dialogs.boxes.size(), boxesBefore);
            } else {
                ASSERT_EQ(p.dialogs.boxes.size(), boxesBefore + 1);
                EXPECT_EQ(
                    p.dialogs.boxes.back().prompt,
                    "Warning : Modified gain settings were being used which have not been written to the module.");
                EXPECT_EQ(p.dialogs.boxes.back().title, "KDX Disconnected");
                EXPECT_EQ(p.dialogs.boxes.back().style, box::Critical);
            }
            const std::size_t boxesAtLoss = p.dialogs.boxes.size();
            const QString rateDuringSilence = p.main.AxisRatetb[0]->text();
            p.run(1.5);
            EXPECT_FALSE(p.comms.GetCommsGood());
            EXPECT_EQ(p.main.AxisRatetb[0]->text(), rateDuringSilence);

            // Nobody touches anything: the module streams again and the program follows.
            p.run(1.5);
            EXPECT_TRUE(p.comms.GetCommsGood());
            EXPECT_EQ(p.losses, 1) << "one loss, one report";
            EXPECT_EQ(p.dialogs.boxes.size(), boxesAtLoss);
            const QString rate = p.main.AxisRatetb[0]->text();
            p.run(0.5);
            EXPECT_NE(p.main.AxisRatetb[0]->text(), rate) << "the live values move again";
            EXPECT_EQ(p.main.TargetIsQVane, qvane);
        }
    }
}

TEST(ProgramFaultWindow, ASaveThatFailsHalfWayKeepsThePreviousFileAndShowsTheSystemsBox)
{
    enum class File { Kdx, Bls, Btf };
    struct Fault {
        AtomicSaveFault step;
        const char* reason;
    };
    for (File file : {File::Kdx, File::Bls, File::Btf}) {
        for (Fault fault : {Fault{AtomicSaveFault::Create, "Permission denied"},
                            Fault{AtomicSaveFault::Write, "No space left on device"}}) {
            SCOPED_TRACE(testing::Message() << "file " << int(file) << ", " << fault.reason);
            QTemporaryDir dir;
            Program p(file == File::Bls);
            p.run(1.5);
            ASSERT_EQ(p.main.TargetIsQVane, file == File::Bls);
            const char* name = file == File::Kdx ? "keep.kdx" : file == File::Bls ? "keep.bls" : "keep.btf";
            const std::string path = QDir(dir.path()).filePath(name).toStdString();
            auto save = [&] {
                p.dialogs.files.push_back(path);
                if (file == File::Btf) p.graph.SaveTracecb_Click();
                else p.main.SaveConfigcb_Click();
            };
            save();
            ASSERT_TRUE(p.dialogs.boxes.empty());
            const std::string before = readFile(path);
            ASSERT_FALSE(before.empty());

            // Something new to save: a changed parameter, or more of the sweep.
            if (file == File::Btf) {
                p.run(1.0);
                ASSERT_NE(p.graph.model().traceFileText(), before);
            } else {
                p.dialogs.inputs.push_back("70");
                p.main.ParamLabel_Click(ParamLabel::PTermtb, 0);
            }
            p.program.saver.fault = fault.step;
            save();
            p.program.saver.fault = AtomicSaveFault::None;

            EXPECT_EQ(readFile(path), before);
            EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path().toStdString()), {}), 1)
                << "nothing else is left in the folder";
            ASSERT_EQ(p.dialogs.boxes.size(), 1u);
            const std::string prefix = file == File::Btf ? "Error writing trace file: " : "Error writing backup file: ";
            EXPECT_EQ(p.dialogs.boxes[0].prompt, prefix + fault.reason);
            EXPECT_EQ(p.dialogs.boxes[0].title, "File Write");
            if (file != File::Btf) {
                EXPECT_NE(p.main.MemReqtb->text(), "Saved");
            }

            save(); // the fault gone, the same save goes through
            EXPECT_NE(readFile(path), before);
            EXPECT_EQ(p.dialogs.boxes.size(), 1u);
        }
    }
}

#ifdef __linux__
// A lowered file-size limit makes the kernel refuse writes past it, as a full disk does.
TEST(ProgramFaultWindow, ALogOnADiskThatFillsStopsWithOneMessageAndKeepsEveryLineWrittenBefore)
{
    QTemporaryDir dir;
    const std::string path = QDir(dir.path()).filePath("Run1.csv").toStdString();
    Program p(false);
    p.logging.LogFileName->setText(QString::fromStdString(path));
    p.run(1.0);
    p.logging.StartLog_Click();
    ASSERT_TRUE(p.logging.GetLoggingDataToFile());
    const std::size_t heardAtStart = p.heard.size();

    {
        const FileSizeLimit full(40000); // about three seconds of lines
        p.run(8.0);
    }

    ASSERT_EQ(p.dialogs.boxes.size(), 1u) << "one message, however long the telemetry goes on";
    EXPECT_EQ(p.dialogs.boxes[0].prompt, "Error writing log file: File too large");
    EXPECT_EQ(p.dialogs.boxes[0].title, "File Write");
    EXPECT_FALSE(p.logging.GetLoggingDataToFile());
    EXPECT_EQ(p.logging.logFileName(), QDir(dir.path()).filePath("Run2.csv").toStdString()) << "the next log is new";

    // The file is the header and the first lines of the log, each one whole.
    TelemetryLogStream reference;
    Receiver rx(&reference);
    rx.receiveBytes(std::span<const uint8_t>(p.heard).subspan(heardAtStart));
    const std::string all = reference.text();
    const std::string kept = readFile(path);
    ASSERT_GT(kept.size(), 20000u);
    EXPECT_LE(kept.size(), 40000u);
    EXPECT_EQ(kept.substr(kept.size() - 2), "\r\n");
    EXPECT_EQ(all.compare(0, kept.size(), kept), 0) << "the lines kept are the lines logged, in order";
    EXPECT_LT(kept.size(), all.size());
}
#endif
