#include "config/memory_layout.h"
#include "fakes/program_rig.h"
#include "widgets/click_label.h"
#include "telemetry/cyclic_frames.h"

#include <QCoreApplication>
#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
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
    void answerMemory(const std::vector<uint8_t>& image) { port.deliver(buildFrame(120, image)); }
    std::string text(ParamLabel l, int m) { return main.label(l, m)->text().toStdString(); }
    void edit(ParamLabel l, const char* answer)
    {
        dialogs.inputs.push_back(answer);
        main.ParamLabel_Click(l, 0);
    }
};

const QColor kGreenFace(0, 255, 0);
const QColor kGreyFace(0xC0, 0xC0, 0xC0);
QColor face(QWidget* w) { return w->palette().color(QPalette::Button); }

std::vector<uint8_t> sampleImage()
{
    std::vector<uint8_t> img(60, 0);
    for (int m = 0; m < 2; ++m) {
        const int b = 30 * m;
        img[b + layout::PwmPeriod] = 208; // 2000 counts: 20 kHz
        img[b + layout::PwmPeriod + 1] = 7;
        img[b + layout::PTerm] = 128;                               // 128 counts = 100 %
        img[b + layout::DriveRatio + 1] = 64;                       // 16384: 1:1
        img[b + layout::AxisFlags] = static_cast<uint8_t>(130 + m); // Pan reversed / Off
        img[b + layout::Poles] = 14;
    }
    return img;
}

} // namespace

TEST(MainEntryWindow, CommsQualityShowsTheMessagesOfEachTickAsAPercentage)
{
    Rig r;
    struct Case {
        int good;
        const char* shown;
    };
    for (const Case& c : {Case{49, "100%"}, {48, "96%"}, {0, "0%"}}) {
        for (int i = 0; i < c.good; ++i) r.main.PutMessageReceived(true);
        r.main.CommsQualityTmr_Timer();
        EXPECT_EQ(r.main.CommsQualitylb->text().toStdString(), c.shown) << c.good;
    }
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
    struct Step {
        const char* what;
        std::function<void()> act;
        bool marked;
        const char* status;
    };
    const Step steps[] = {
        {"a reply with no request", [&] { r.answerMemory(forged); }, true, "OK"},
        {"Read", [&] { r.main.ReadConfigcb_Click(); }, false, "Reading ..."},
        {"its answer", [&] { r.answerMemory(sampleImage()); }, false, "OK"},
        {"a second answer", [&] { r.answerMemory(forged); }, true, "OK"},
        {"Write", [&] { r.main.WriteConfigcb_Click(); }, false, "Writing ..."},
        {"the time-out", [&] { r.main.MemReqTimer_Timer(); }, false, " Timed out"},
        {"a relayed reply after it", [&] { r.port.deliver(buildFrame(137, relayed)); }, true, "OK"},
        {"a short reply after a read",
         [&] {
             r.main.ReadConfigcb_Click();
             r.answerMemory({1, 2});
         },
         false, "Reading ..."},
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

TEST(MainEntryWindow, EachParameterLabelAsksInItsOwnWords)
{
    Rig r;
    r.main.show();
    QTest::mouseClick(r.main.Voltagetb, Qt::LeftButton); // a plain click: nothing
    EXPECT_FALSE(r.main.DebugIDFr->isVisible());
    EXPECT_FALSE(r.debug.isVisible());
    r.keys.shift = true;
    QTest::mouseClick(r.main.Voltagetb, Qt::LeftButton); // the debug display and identifier
    r.keys.shift = false;
    EXPECT_TRUE(r.main.DebugIDFr->isVisible());
    EXPECT_TRUE(r.debug.isVisible());
    using L = ParamLabel;
    const std::pair<ParamLabel, const char*> cases[] = {
        {L::PTermtb, "Enter new P term % -2000..2000"},
        {L::DTermtb, "Enter new D term % -2000..2000"},
        {L::IAngletb, "Enter new angle where I starts ramping to zero (0..16 degrees)"},
        {L::IRatetb, "Enter new I ramp rate"},
        {L::DTermLimittb, "Enter new D term limit 0..255"},
        {L::Powertb, "Enter new static power %"},
        {L::PowerHitb, "Enter new dynamic power %"},
        {L::PowerErrortb, "Enter new angle error for max power (0 to 16 degrees)"},
        {L::Freqtb, "Enter new PWM frequency (KHz)"},
        {L::Gaintb, "Enter new Gain % 0..12,700"},
        {L::RecoveryAngletb, "Enter new recovery angle (0..179) (0 = Disable recovery mode)"},
        {L::Polestb, "Enter number of poles for the motor"},
        {L::Ratiotb, "Enter new drive ratio (eg 3 for 3:1) "},
        {L::FPTrimtb, "Enter new power-up fixed position motor drive trim (0..360)"},
        {L::Axistb, "Enter new Q-Vane axis ( 0=Tilt, 1=Roll, 2=Pan, 3=Off )"},
        {L::DebIDtb, "Enter new debug ID"},
    };
    for (const auto& [label, prompt] : cases) {
        r.dialogs.inputs.push_back(""); // Cancel
        QTest::mouseClick(label == L::DebIDtb ? r.main.DebIDtb : r.main.label(label, 0), Qt::LeftButton);
        ASSERT_FALSE(r.dialogs.prompts.empty()) << prompt;
        EXPECT_EQ(r.dialogs.prompts.back().prompt, prompt);
        EXPECT_EQ(r.dialogs.prompts.back().title, "Brushless Motor Drive Parameter Entry");
    }
    EXPECT_EQ(r.dialogs.prompts.size(), 16u);
    // Cancel re-stores the value, which counts as an edit.
    EXPECT_EQ(r.main.MemReqtb->text(), "Write to Apply");
    EXPECT_EQ(face(r.main.WriteConfigcb), kGreenFace);
}

TEST(MainEntryWindow, MessageBoxesCarryTheSystemsWordsTitlesAndIcons)
{
    using Act = std::function<void(Rig&)>;
    struct Case {
        const char* name;
        Act act; // ends in the box, answered No
        const char* prompt;
        const char* title;
        int style;
    };
    const Case cases[] = {
        {"axis choice over unwritten edits",
         [](Rig& r) {
             r.edit(ParamLabel::PTermtb, "60");
             r.main.KDXAxisSelcb[1]->click();
         },
         "The current data has been modified but not written. Continue with read ?", "Data Modified", 52},
        {"Load", [](Rig& r) { r.main.LoadConfigcb->click(); },
         "This will overwrite the current configuration. Are you sure ?", "Confirm File Load", 4},
        {"Q-Vane axis through a Q-Vane",
         [](Rig& r) {
             r.port.deliver(CyclicBytes::relayed().byte(20, 16).frame());
             r.main.ParamLabel_Click(ParamLabel::Axistb, 0);
         },
         "If the axis is changed and written to the module, the KDX will stop responding as it's current axis. If "
         "it is set to the same value as another KDX axis, you will have to connect directly to the KDX to be able "
         "to change it again. Proceed anyway ?.",
         "Changing KDX Axis", 52},
        {"other motor over tuned gains",
         [](Rig& r) {
             r.answerMemory(sampleImage());
             r.graph.MotorSelcb_Click(0);
             r.graph.Inccb_Click(Gain::P, 0);
             r.graph.MotorSelcb_Click(1);
         },
         "The Gain settings have been modified without saving to the main config window. Update them now ?",
         "Gain Modified", 4},
        {"telemetry lost over unwritten edits",
         [](Rig& r) {
             r.port.deliver(CyclicBytes::direct().frame());
             r.answerMemory(sampleImage());
             r.edit(ParamLabel::PTermtb, "60");
             r.comms.CommsTimeout_Timer();
             r.comms.CommsTimeout_Timer();
             QCoreApplication::sendPostedEvents(); // the watchdog's box opens once its tick returned
         },
         "Warning : Modified gain settings were being used which have not been written to the module.",
         "KDX Disconnected", 16},
    };
    for (const Case& c : cases) {
        Rig r;
        if (c.style != box::Critical) r.dialogs.answers.push_back(Answer::No); // a critical box asks nothing
        c.act(r);
        ASSERT_EQ(r.dialogs.boxes.size(), 1u) << c.name;
        EXPECT_EQ(r.dialogs.boxes[0].prompt, c.prompt) << c.name;
        EXPECT_EQ(r.dialogs.boxes[0].title, c.title) << c.name;
        EXPECT_EQ(r.dialogs.boxes[0].style, c.style) << c.name;
    }
}

TEST(MainEntryWindow, WriteSendsTheImageAndStaysPendingUntilTheModuleAnswers)
{
    Rig r;
    EXPECT_EQ(face(r.main.WriteConfigcb), kGreyFace) << "nothing to write yet";
    r.answerMemory(sampleImage());
    r.edit(ParamLabel::PTermtb, "50");
    EXPECT_EQ(face(r.main.WriteConfigcb), kGreenFace);
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
    EXPECT_EQ(face(r.main.WriteConfigcb), kGreyFace);
}

TEST(MainEntryWindow, AxisChoiceAsksBeforeReadingOverChanges)
{
    Rig r;
    r.answerMemory(sampleImage());
    r.edit(ParamLabel::PTermtb, "60");
    r.port.written.clear();
    r.dialogs.answers.push_back(Answer::No);
    r.main.KDXAxisSelcb_Click(2);
    EXPECT_TRUE(r.port.written.empty());
    EXPECT_EQ(r.dialogs.boxes.size(), 1u);
    r.dialogs.answers.push_back(Answer::Yes);
    r.main.TargetIsQVane = true;
    r.main.KDXAxisSelcb_Click(2);
    EXPECT_EQ(r.port.written, (std::vector<uint8_t>{0x5A, 3, 133, 136, 0x5A, 4, 130, 130, 8}));

    // An index no button has: three elements, the identifier the last message left (the
    // relayed write's 130) and its checksum; the selected axis stays Pan.
    r.main.WriteConfigcb_Click();
    r.port.written.clear();
    r.dialogs.answers.push_back(Answer::Yes);
    r.main.KDXAxisSelcb_Click(3);
    EXPECT_EQ(r.port.written, (std::vector<uint8_t>{0x5A, 3, 130, 133, 0x5A, 4, 130, 130, 8}));
    EXPECT_EQ(r.main.QVaneAxis, 2);
}

TEST(MainEntryWindow, TargetAndAxisButtonsFollowTheChoiceAndTheTelemetry)
{
    Rig r;
    const auto lit = [&] {
        std::string s;
        for (QPushButton* b : r.main.KDXAxisSelcb) s += face(b) == kGreenFace ? 'G' : face(b) == kGreyFace ? '-' : '?';
        return s;
    };
    const auto axisFrameShown = [&] { return r.main.QVaneConnectFr->isVisibleTo(&r.main); };
    EXPECT_EQ(lit(), "---");
    EXPECT_FALSE(axisFrameShown());
    r.main.TgtSelcb[1]->click();
    EXPECT_EQ(lit(), "G--");
    EXPECT_TRUE(axisFrameShown());
    r.main.TgtSelcb[0]->click();
    EXPECT_EQ(lit(), "---");
    EXPECT_FALSE(axisFrameShown());

    // A Q-Vane reporting Roll with no valid command input: the wait goes on. It reports
    // one motor, so the tuning window offers one.
    const QColor kRedFace(255, 0, 0);
    r.deliverAndShow(CyclicBytes::relayed().byte(2, 1).frame());
    EXPECT_EQ(lit(), "-G-");
    EXPECT_TRUE(r.wait.isVisible());
    EXPECT_FALSE(r.main.isVisible());
    EXPECT_EQ(face(r.graph.InputValidInd), kRedFace);
    EXPECT_TRUE(r.graph.MotorSelcb[1]->isHidden());
    r.deliverAndShow(CyclicBytes::relayed().byte(2, 1).byte(20, 32).frame()); // Spektrum, Roll's input, valid
    EXPECT_FALSE(r.wait.isVisible());
    EXPECT_TRUE(r.main.isVisible());
    EXPECT_TRUE(r.graph.isVisible());
    EXPECT_EQ(face(r.graph.InputValidInd), kGreenFace);
    r.port.deliver(CyclicBytes::direct().frame());
    EXPECT_EQ(lit(), "---");
    EXPECT_FALSE(r.graph.MotorSelcb[1]->isHidden());
}

TEST(MainEntryWindow, SaveAndLoadBackupFiles)
{
    QTemporaryDir dir;
    Rig r;
    r.answerMemory(sampleImage());
    const std::string path = QDir(dir.path()).filePath("pan.kdx").toStdString();
    r.dialogs.files.push_back(path);
    r.main.SaveConfigcb_Click();
    EXPECT_EQ(r.main.windowTitle(), "KDX Tool - pan.kdx");
    EXPECT_EQ(r.dialogs.fileRequests.back().filter,
              "Two-Axis Brushless Driver Files (*.kdx)|*.kdx|All Files (*.*)|*.*");
    EXPECT_EQ(r.dialogs.fileRequests.back().fileName, "Wibbly.kdx");
    std::ifstream in(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), {});
    ASSERT_EQ(bytes.size(), 180u);
    EXPECT_EQ(bytes.substr(0, 36), "*!    VELMOR KDX Backup File     *\r\n");

    // Change a value, then load the file back over it.
    r.edit(ParamLabel::PTermtb, "70");
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
    EXPECT_EQ(r.main.windowTitle(), "KDX Tool - pan.kdx") << "a file that did not load is not named";
}

TEST(MainEntryWindow, DebugDisplayClosedWithItsCloseBoxComesBackFromTheWindowMenu)
{
    Rig r;
    r.main.mnuDebug->trigger();
    // Closed with its close box, the Window menu brings it back.
    r.debug.close();
    ASSERT_FALSE(r.debug.isVisible());
    r.main.mnuDebug->trigger();
    EXPECT_TRUE(r.debug.isVisible());
}
