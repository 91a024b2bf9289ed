#include "config/memory_layout.h"
#include "fakes/program_rig.h"
#include "link/comms_link_window.h"
#include "mainwindow/click_label.h"
#include "mainwindow/main_entry.h"

#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <iterator>

using namespace kdx;
using namespace kdx::test;

namespace {

struct Rig : ProgramRig {
    // The module answers with its memory: a direct 120 message of 60 bytes.
    void answerMemory(const std::vector<uint8_t>& image)
    {
        port.deliver(buildFrame(120, image));
    }
    std::string text(ParamLabel l, int m) { return main.label(l, m)->text().toStdString(); }
};

std::vector<uint8_t> sampleImage()
{
    std::vector<uint8_t> img(60, 0);
    for (int m = 0; m < 2; ++m) {
        const int b = 30 * m;
        img[b + layout::PwmPeriod] = 208; // 2000 counts: 20 kHz
        img[b + layout::PwmPeriod + 1] = 7;
        img[b + layout::PTerm] = 128;    // 128 counts = 100 %
        img[b + layout::DriveRatio + 1] = 64; // 16384: 1:1
        img[b + layout::AxisFlags] = static_cast<uint8_t>(130 + m); // Pan reversed / Off
        img[b + layout::Poles] = 14;
    }
    return img;
}

} // namespace

TEST(MainEntryWindow, CommsQualityReadsFiftyMessagesPerTickAsFull)
{
    Rig r;
    struct Case { int good; const char* shown; };
    for (const Case& c : {Case{49, "100%"}, {48, "96%"}, {60, "100%"}, {50, "100%"}, {25, "50%"}, {0, "0%"}}) {
        for (int i = 0; i < c.good; ++i) r.main.PutMessageReceived(true);
        r.main.CommsQualityTmr_Timer();
        EXPECT_EQ(r.main.CommsQualitylb->text().toStdString(), c.shown) << c.good;
        EXPECT_EQ(r.main.GoodMsgCount, 0);
    }
    r.main.BadMsgCount = 32761;
    r.main.PutMessageReceived(false);
    EXPECT_EQ(r.main.BadMsgCount, 0);
}

TEST(MainEntryWindow, ReadShowsTheModulesConfiguration)
{
    Rig r;
    QTest::mouseClick(r.main.ReadConfigcb, Qt::LeftButton);
    EXPECT_EQ(r.port.written, (std::vector<uint8_t>{0x5A, 3, 112, 115}));
    EXPECT_EQ(r.main.MemReqtb->text(), "Reading ...");
    r.answerMemory(sampleImage());
    EXPECT_EQ(r.main.MemReqtb->text(), "OK");
    EXPECT_FALSE(r.main.MemReqTimer->isActive());
    EXPECT_EQ(r.text(ParamLabel::Freqtb, 0), "20.0");
    EXPECT_EQ(r.text(ParamLabel::PTermtb, 1), "100");
    EXPECT_EQ(r.text(ParamLabel::Ratiotb, 0), "1:1");
    EXPECT_EQ(r.text(ParamLabel::Axistb, 0), "Pan");
    EXPECT_EQ(r.text(ParamLabel::Axistb, 1), "Off");
    EXPECT_TRUE(r.main.Reversecb[0]->isChecked());
    EXPECT_TRUE(r.main.GetGainsHaveBeenLoaded());
    EXPECT_FALSE(r.main.GetDataModified());
}

TEST(MainEntryWindow, ReadTimesOutWithoutAnswer)
{
    Rig r;
    r.main.ReadConfigcb_Click();
    r.main.ReadConfigcb_Click(); // a second request restarts the time-out
    EXPECT_TRUE(r.main.MemReqTimer->isActive());
    r.main.MemReqTimer_Timer();
    EXPECT_EQ(r.main.MemReqtb->text(), " Timed out");
    EXPECT_FALSE(r.main.MemReqTimer->isActive());
}

// Noise on the line can form a memory message with a good checksum. It is taken like an
// answer, and the window says where the user looks before writing that nobody asked.
TEST(MainEntryWindow, AReplyNobodyAskedForIsMarkedUntilTheNextReadOrWrite)
{
    Rig r;
    std::vector<uint8_t> forged(60, 0x11), relayed(32, 0x22);
    struct Step { const char* what; std::function<void()> act; bool marked; const char* status; };
    const Step steps[] = {
        {"a reply with no request", [&] { r.answerMemory(forged); }, true, "OK"},
        {"Read", [&] { r.main.ReadConfigcb_Click(); }, false, "Reading ..."},
        {"its answer", [&] { r.answerMemory(sampleImage()); }, false, "OK"},
        {"a second answer", [&] { r.answerMemory(forged); }, true, "OK"},
        {"Write", [&] { r.main.WriteConfigcb_Click(); }, false, "Writing ..."},
        {"the time-out", [&] { r.main.MemReqTimer_Timer(); }, false, " Timed out"},
        {"a relayed reply after it", [&] { r.port.deliver(buildFrame(137, relayed)); }, true, "OK"},
        {"a short reply after a read", [&] { r.main.ReadConfigcb_Click(); r.answerMemory({1, 2}); }, false, "Reading ..."},
    };
    for (const Step& step : steps) {
        step.act();
        r.comms.CommsTimeout_Timer(); // clears the receiver's guard after an abandoned message
        EXPECT_EQ(r.main.UnrequestedReplylb->isVisibleTo(&r.main), step.marked) << step.what;
        EXPECT_EQ(r.main.MemReqtb->text().toStdString(), step.status) << step.what;
    }
    EXPECT_EQ(r.main.config().image()[10], 0x22) << "the relayed reply was taken all the same";
    EXPECT_EQ(r.main.WriteConfigcb->palette().color(QPalette::Button), QColor(0xC0, 0xC0, 0xC0));
}

TEST(MainEntryWindow, ShortMemoryMessageAbandonsTheHandlerAndTheProgramGoesOn)
{
    Rig r;
    r.main.ReadConfigcb_Click();
    r.port.deliver(buildFrame(120, std::vector<uint8_t>(20, 9)));
    EXPECT_EQ(r.main.MemReqtb->text(), "Reading ..."); // abandoned before "OK"
    r.comms.CommsTimeout_Timer();
    r.answerMemory(sampleImage());
    EXPECT_EQ(r.main.MemReqtb->text(), "OK");
}

TEST(MainEntryWindow, EntryRangesDifferFromPromptsAndCancelRestores)
{
    Rig r;
    r.answerMemory(sampleImage());
    struct Case {
        ParamLabel label;
        const char* answer;
        const char* shown;
        bool modified;
    };
    const Case cases[] = {
        {ParamLabel::PTermtb, "2500", "2500", true},
        {ParamLabel::PTermtb, "2551", "100", false},
        {ParamLabel::Polestb, "abc", "0", true},
        {ParamLabel::Freqtb, "abc", "20.0", false},
        {ParamLabel::Freqtb, "20.5", "20.0", true},
        {ParamLabel::FPTrimtb, "360", "0", false},
        {ParamLabel::Gaintb, "-5000", "-5000", true},
        {ParamLabel::Polestb, "", "14", true}, // Cancel re-stores the value
    };
    for (const Case& c : cases) {
        r.answerMemory(sampleImage()); // fresh, unmodified
        r.dialogs.inputs.push_back(c.answer);
        QTest::mouseClick(r.main.label(c.label, 0), Qt::LeftButton);
        EXPECT_EQ(r.text(c.label, 0), c.shown) << c.answer;
        EXPECT_EQ(r.main.GetDataModified(), c.modified) << c.answer;
        EXPECT_EQ(r.dialogs.prompts.back().title, "Brushless Motor Drive Parameter Entry");
    }
    EXPECT_EQ(r.main.MemReqtb->text(), "Write to Apply");
}

TEST(MainEntryWindow, WriteSendsTheImageAndStaysPendingUntilTheModuleAnswers)
{
    Rig r;
    r.answerMemory(sampleImage());
    r.dialogs.inputs.push_back("50");
    r.main.ParamLabel_Click(ParamLabel::PTermtb, 0);
    const QColor green(0, 255, 0);
    EXPECT_EQ(r.main.WriteConfigcb->palette().color(QPalette::Button), green);
    r.port.written.clear();
    QTest::mouseClick(r.main.WriteConfigcb, Qt::LeftButton);
    ASSERT_EQ(r.port.written.size(), 64u); // start byte + 63
    EXPECT_EQ(r.port.written[1], 63);
    EXPECT_EQ(r.port.written[2], 113);
    EXPECT_EQ(r.port.written[3 + layout::PTerm], 64); // 50 % = 64 counts
    EXPECT_EQ(r.main.MemReqtb->text(), "Writing ...");
    EXPECT_TRUE(r.main.GetDataModified());
    std::vector<uint8_t> echoed(r.port.written.begin() + 3, r.port.written.begin() + 63);
    r.answerMemory(echoed);
    EXPECT_FALSE(r.main.GetDataModified());
    EXPECT_EQ(r.main.WriteConfigcb->palette().color(QPalette::Button), QColor(0xC0, 0xC0, 0xC0));
}

TEST(MainEntryWindow, AxisChoiceAsksBeforeReadingOverChanges)
{
    Rig r;
    r.answerMemory(sampleImage());
    r.dialogs.inputs.push_back("60");
    r.main.ParamLabel_Click(ParamLabel::PTermtb, 0);
    r.port.written.clear();
    r.dialogs.answers.push_back(Answer::No);
    r.main.KDXAxisSelcb_Click(2);
    EXPECT_TRUE(r.port.written.empty());
    ASSERT_EQ(r.dialogs.boxes.size(), 1u);
    EXPECT_EQ(r.dialogs.boxes[0].style, 52);
    r.dialogs.answers.push_back(Answer::Yes);
    r.main.TargetIsQVane = true;
    r.main.KDXAxisSelcb_Click(2);
    EXPECT_EQ(r.port.written, (std::vector<uint8_t>{0x5A, 3, 133, 136, 0x5A, 4, 130, 130, 8}));
}

TEST(MainEntryWindow, SaveAndLoadBackupFiles)
{
    QTemporaryDir dir;
    Rig r;
    r.answerMemory(sampleImage());
    const std::string path = QDir(dir.path()).filePath("pan.kdx").toStdString();
    r.dialogs.files.push_back(path);
    r.main.SaveConfigcb_Click();
    EXPECT_EQ(r.dialogs.fileRequests.back().filter, "Two-Axis Brushless Driver Files (*.kdx)|*.kdx|All Files (*.*)|*.*");
    EXPECT_EQ(r.dialogs.fileRequests.back().fileName, "Wibbly.kdx");
    std::ifstream in(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), {});
    ASSERT_EQ(bytes.size(), 180u);
    EXPECT_EQ(bytes.substr(0, 36), "*!    VELMOR KDX Backup File     *\r\n");

    // Change a value, then load the file back over it.
    r.dialogs.inputs.push_back("70");
    r.main.ParamLabel_Click(ParamLabel::PTermtb, 0);
    r.dialogs.answers.push_back(Answer::Yes);
    r.dialogs.files.push_back(path);
    r.main.LoadConfigcb_Click();
    EXPECT_EQ(r.text(ParamLabel::PTermtb, 0), "100");
    EXPECT_FALSE(r.main.GetDataModified());

    // A Q-Vane target asked which motor of a two-axis file to load: No takes the second.
    r.main.TargetIsQVane = true;
    r.dialogs.answers = {Answer::Yes, Answer::No};
    r.dialogs.files.push_back(path);
    r.main.LoadConfigcb_Click();
    EXPECT_EQ(r.dialogs.boxes.back().title, "Config Read");
    EXPECT_EQ(r.text(ParamLabel::Axistb, 0), "Off");

    // A broken file: the system's box, the configuration unchanged.
    const std::string bad = QDir(dir.path()).filePath("bad.kdx").toStdString();
    std::ofstream(bad, std::ios::binary) << "*!" + std::string(31, ' ') + "*\r\n"; // a comment only
    r.main.TargetIsQVane = false;
    r.dialogs.answers.push_back(Answer::Yes);
    r.dialogs.files.push_back(bad);
    r.main.LoadConfigcb_Click();
    EXPECT_EQ(r.dialogs.boxes.back().prompt, "Insufficent Data In Config File");
    EXPECT_EQ(r.text(ParamLabel::Axistb, 0), "Off");
}

TEST(MainEntryWindow, ShiftClickOnVoltageRevealsTheDebugDisplayAndFrame)
{
    Rig r;
    r.main.show();
    QTest::mouseClick(r.main.Voltagetb, Qt::LeftButton);
    EXPECT_FALSE(r.main.DebugIDFr->isVisible());
    EXPECT_FALSE(r.debug.isVisible());
    r.keys.shift = true;
    QTest::mouseClick(r.main.Voltagetb, Qt::LeftButton);
    EXPECT_TRUE(r.main.DebugIDFr->isVisible());
    EXPECT_TRUE(r.debug.isVisible());
    // Closed with its close box, the Window menu brings it back.
    r.debug.close();
    ASSERT_FALSE(r.debug.isVisible());
    r.main.mnuDebug->trigger();
    EXPECT_TRUE(r.debug.isVisible());
}
