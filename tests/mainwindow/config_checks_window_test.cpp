// The main window's checks on the configuration: change marks, Compare with File and
// the status-bar warning for values the module will not give back as entered.
#include "config/memory_layout.h"
#include "fakes/program_rig.h"
#include "mainwindow/compare_window.h"
#include "widgets/click_label.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QStatusBar>
#include <QTableWidget>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <functional>
#include <string>

using namespace kdx;
using namespace kdx::test;

namespace {

// Both motors at 20 kHz (2000 counts), P 100 % (128), 1:1, 14 poles; motor 1 Pan and
// reversed, motor 2 axis Off.
std::vector<uint8_t> moduleImage()
{
    std::vector<uint8_t> img(60, 0);
    for (int m = 0; m < 2; ++m) {
        const int b = 30 * m;
        img[b + layout::PwmPeriod] = 208;
        img[b + layout::PwmPeriod + 1] = 7;
        img[b + layout::PTerm] = 128;
        img[b + layout::DriveRatio + 1] = 64;
        img[b + layout::AxisFlags] = static_cast<uint8_t>(130 + m);
        img[b + layout::Poles] = 14;
    }
    return img;
}

struct Rig : ProgramRig {
    void answerMemory() { port.deliver(buildFrame(120, moduleImage())); }
    void edit(ParamLabel l, int motor, const char* answer)
    {
        dialogs.inputs.push_back(answer);
        main.ParamLabel_Click(l, motor);
    }
    // The controls whose change mark is showing, by name, in the window's order.
    std::string marked()
    {
        std::string out;
        for (const QLabel* mark : main.findChildren<QLabel*>()) {
            if (!mark->objectName().endsWith("Changed") || mark->text().isEmpty()) continue;
            if (!out.empty()) out += ' ';
            out += mark->objectName().chopped(7).toStdString();
        }
        return out;
    }
    std::string saveTo(const QTemporaryDir& dir, const char* name)
    {
        const std::string path = QDir(dir.path()).filePath(name).toStdString();
        dialogs.files.push_back(path);
        main.SaveConfigcb_Click();
        return path;
    }
};

} // namespace

TEST(ConfigChecksWindow, MarksShowWhatDiffersFromTheLastReportUntilTheNextOne)
{
    QTemporaryDir dir;
    Rig r;
    r.answerMemory();
    r.edit(ParamLabel::Polestb, 0, "12");
    const std::string twelvePoles = r.saveTo(dir, "twelve.kdx");

    struct Step {
        const char* what;
        std::function<void()> act;
        const char* marked;
    };
    const Step steps[] = {
        {"a memory reply", [&] { r.answerMemory(); }, ""},
        {"P of motor 1", [&] { r.edit(ParamLabel::PTermtb, 0, "70"); }, "PTermtb0"},
        {"Reverse of motor 2", [&] { r.main.Reversecb[1]->click(); }, "PTermtb0 Reversecb1"},
        {"Cancel on motor 2's I angle", [&] { r.edit(ParamLabel::IAngletb, 1, ""); }, "PTermtb0 Reversecb1"},
        {"P of motor 1 back to 100", [&] { r.edit(ParamLabel::PTermtb, 0, "100"); }, "Reversecb1"},
        {"the debug identifier", [&] { r.edit(ParamLabel::DebIDtb, 0, "7"); }, "Reversecb1 DebIDtb"},
        {"a memory reply", [&] { r.answerMemory(); }, ""},
        {"a loaded file",
         [&] {
             r.dialogs.answers.push_back(Answer::Yes);
             r.dialogs.files.push_back(twelvePoles);
             r.main.LoadConfigcb_Click();
         },
         "Polestb0"},
        {"Write, before its answer", [&] { r.main.WriteConfigcb_Click(); }, "Polestb0"},
        {"the answer to the write", [&] { r.answerMemory(); }, ""},
    };
    for (const Step& step : steps) {
        step.act();
        EXPECT_EQ(r.marked(), step.marked) << step.what;
    }
    EXPECT_EQ(r.main.WriteConfigcb->palette().color(QPalette::Button), QColor(0xC0, 0xC0, 0xC0));
}

TEST(ConfigChecksWindow, CompareWithFileListsTheDifferencesAndLoadsThem)
{
    QTemporaryDir dir;
    Rig r;
    r.answerMemory();
    const std::string backup = r.saveTo(dir, "backup.kdx");
    r.edit(ParamLabel::PTermtb, 0, "70");
    r.edit(ParamLabel::Polestb, 1, "12");
    r.edit(ParamLabel::Freqtb, 1, "8");
    r.main.Reversecb[0]->click();
    r.port.written.clear();

    r.dialogs.files.push_back(backup);
    r.main.mnuCompare->trigger();
    EXPECT_EQ(r.dialogs.fileRequests.back().filter,
              "Brushless Driver Backup Files|*.kdx;*.bls|Two-Axis Brushless Driver Files (*.kdx)|*.kdx|"
              "Single-Axis Brushless Driver Files (*.bls)|*.bls|All Files (*.*)|*.*");
    auto* compare = r.main.findChild<CompareWindow*>();
    ASSERT_NE(compare, nullptr);
    EXPECT_TRUE(compare->isVisible());
    EXPECT_FALSE(compare->Motorcb->isVisibleTo(compare)) << "both sides hold two motors";
    EXPECT_EQ(compare->Summarylb->text(), "4 differences.");
    const char* rows[][4] = {
        {"P term %", "1", "70", "100"},
        {"Reverse", "1", "0", "1"},
        {"PWM (kHz)", "2", "8.0", "20.0"},
        {"Poles", "2", "12", "14"},
    };
    ASSERT_EQ(compare->Differencesgr->rowCount(), 4);
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            EXPECT_EQ(compare->Differencesgr->item(row, column)->text().toStdString(), rows[row][column])
                << row << "," << column;
    EXPECT_TRUE(r.port.written.empty()) << "comparing sends nothing";

    // Load asks File, Load's question; No leaves everything as it is.
    r.dialogs.answers.push_back(Answer::No);
    compare->Loadcb->click();
    EXPECT_EQ(r.main.label(ParamLabel::PTermtb, 0)->text(), "70");
    EXPECT_TRUE(compare->isVisible());
    r.dialogs.answers.push_back(Answer::Yes);
    compare->Loadcb->click();
    EXPECT_EQ(r.dialogs.boxes.back().prompt, "This will overwrite the current configuration. Are you sure ?");
    EXPECT_FALSE(compare->isVisible());
    EXPECT_EQ(r.main.label(ParamLabel::PTermtb, 0)->text(), "100");
    EXPECT_EQ(r.main.label(ParamLabel::Polestb, 1)->text(), "14");
    EXPECT_EQ(r.main.label(ParamLabel::Freqtb, 1)->text(), "20.0");
    EXPECT_TRUE(r.main.Reversecb[0]->isChecked());
    EXPECT_EQ(r.main.windowTitle(), "KDX Tool - backup.kdx");
    EXPECT_TRUE(r.port.written.empty()) << "loading sends nothing";
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(r.main.findChild<CompareWindow*>(), nullptr);
}

// Through a Q-Vane the screen holds one motor: a two-motor file offers a motor chooser.
TEST(ConfigChecksWindow, CompareOffersTheMotorOfATwoMotorFileThroughAQVane)
{
    QTemporaryDir dir;
    Rig r;
    r.answerMemory();
    r.edit(ParamLabel::Polestb, 1, "12");
    const std::string backup = r.saveTo(dir, "two.kdx");
    r.main.TargetIsQVane = true;
    r.dialogs.files.push_back(backup);
    r.main.mnuCompare->trigger();
    auto* compare = r.main.findChild<CompareWindow*>();
    ASSERT_NE(compare, nullptr);
    ASSERT_TRUE(compare->Motorcb->isVisibleTo(compare));
    EXPECT_EQ(compare->Motorcb->itemText(0), "Motor 1 (Pan)");
    EXPECT_EQ(compare->Summarylb->text(), "No differences.");
    compare->Motorcb->setCurrentIndex(1);
    EXPECT_EQ(compare->Summarylb->text(), "2 differences.");
    ASSERT_EQ(compare->Differencesgr->rowCount(), 2);
    EXPECT_EQ(compare->Differencesgr->item(0, 0)->text(), "Q-Vane axis");
    EXPECT_EQ(compare->Differencesgr->item(0, 2)->text(), "Pan");
    EXPECT_EQ(compare->Differencesgr->item(0, 3)->text(), "Off");
    EXPECT_EQ(compare->Differencesgr->item(1, 0)->text(), "Poles");
    EXPECT_EQ(compare->Differencesgr->item(1, 3)->text(), "12");
}

TEST(ConfigChecksWindow, StatusBarSaysWhenAnEnteredValueWillNotReadBackAsEntered)
{
    Rig r;
    r.answerMemory();
    struct Case {
        ParamLabel label;
        const char* answer;
        const char* message;
    };
    const Case cases[] = {
        {ParamLabel::Freqtb, "1.2", "PWM frequency 1.20 kHz will read back as 8.0 kHz"},
        {ParamLabel::PTermtb, "50", ""}, // comes back as entered: the warning before it goes
        {ParamLabel::PowerErrortb, "16", "angle error for max power 16.00 deg will read back as 0.00 deg"},
        {ParamLabel::PowerErrortb, "17", "angle error for max power 16.00 deg will read back as 0.00 deg"},
        {ParamLabel::Freqtb, "1.26",
         "PWM frequency 1.26 kHz is stored as 31746, which a read and a write with no edit change to 31745"},
        {ParamLabel::Freqtb, "",
         "PWM frequency 1.26 kHz is stored as 31746, which a read and a write with no edit "
         "change to 31745"}, // Cancel enters nothing new
        {ParamLabel::Polestb, "12", ""},
    };
    for (const Case& c : cases) {
        r.edit(c.label, 0, c.answer);
        EXPECT_EQ(r.main.statusBar()->currentMessage().toStdString(), c.message) << c.answer;
    }
    EXPECT_EQ(r.main.CommsQualitylb->parentWidget(), r.main.statusBar()) << "the permanent widget stays";
}
