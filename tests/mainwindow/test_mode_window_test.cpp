#include "fakes/program_rig.h"
#include "widgets/click_label.h"
#include "telemetry/cyclic_frames.h"
#include "windows/about_window.h"

#include <QAction>
#include <QCheckBox>
#include <QCoreApplication>
#include <QGroupBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>

using namespace kdx;
using namespace kdx::test;

namespace {

using Bytes = std::vector<uint8_t>;

struct Rig : ProgramRig {
    using ProgramRig::ProgramRig;
    Bytes take()
    {
        Bytes b = port.written;
        port.written.clear();
        return b;
    }
    // What one TestTmr tick sends, if the timer runs.
    Bytes tick()
    {
        if (main.TestTmr->isActive()) main.TestTmr_Timer();
        return take();
    }
    void answer(const std::string& text, void (MainEntry::*click)())
    {
        dialogs.inputs.push_back(text);
        (main.*click)();
    }
    // Targets a Q-Vane as the program does: a relayed telemetry message arrives; then
    // the user picks the axis.
    void relayed(int axis = 0)
    {
        port.deliver(CyclicBytes::relayed().byte(2, 0).frame());
        if (axis) main.KDXAxisSelcb_Click(axis);
        take();
    }
};

bool green(QWidget* w) { return w->palette().color(QPalette::Button) == QColor(0, 255, 0); }

std::string text(QLabel* l) { return l->text().toStdString(); }

} // namespace

TEST(TestModeWindow, StartsWithItsDefaultsAndOneIdleCommand)
{
    Rig r(false);
    MainEntry& fresh = r.main;
    EXPECT_EQ(text(fresh.TestPtb), "30%");
    EXPECT_EQ(text(fresh.TestRatetb), "8");
    ASSERT_TRUE(fresh.TestTmr->isActive()) << "enabled from start";
    EXPECT_EQ(fresh.TestTmr->interval(), 100);
    fresh.TestTmr_Timer();
    EXPECT_EQ(r.take(), (Bytes{0x5A, 6, 116, 0, 8, 76, 206})); // 30 % is 76.5, rounded to the even 76
    EXPECT_FALSE(fresh.TestTmr->isActive());
}

TEST(TestModeWindow, ButtonsAndTimerDriveTheTestCommand)
{
    Rig r;
    r.answer("10", &MainEntry::TestRatetb_Click);
    r.answer("50", &MainEntry::TestPtb_Click);
    using Act = std::function<void(Rig&)>;
    const auto dir = [](int m) -> Act { return [m](Rig& g) { QTest::mouseClick(g.main.Testcb[m], Qt::LeftButton); }; };
    const auto off = [](int m) -> Act {
        return [m](Rig& g) { QTest::mouseClick(g.main.TestOffcb[m], Qt::LeftButton); };
    };
    struct Step {
        Act act;
        std::array<bool, 4> lit; // green: Testcb(0), TestOffcb(0), Testcb(1), TestOffcb(1)
        Bytes sent;              // by the next tick
        bool running;            // TestTmr after that tick
    };
    const Step steps[] = {
        // 50 % is 127.5 and rounds to the even 128
        {dir(1), {0, 0, 1, 0}, {0x5A, 6, 116, 2, 10, 128, 6}, true},
        {off(0), {0, 1, 1, 0}, {0x5A, 6, 116, 6, 10, 128, 10}, true},
        {dir(0), {1, 0, 1, 0}, {0x5A, 6, 116, 3, 10, 128, 7}, true},
        {off(0), {0, 1, 1, 0}, {0x5A, 6, 116, 6, 10, 128, 10}, true},
        {[](Rig& g) { g.main.CancelTest(); }, {0, 1, 0, 0}, {0x5A, 6, 116, 4, 10, 128, 8}, true}, // off stays on
        {off(0), {0, 0, 0, 0}, {0x5A, 6, 116, 0, 10, 128, 4}, false}, // the last command, then rest
        {[](Rig&) {}, {0, 0, 0, 0}, {}, false},
        {[&](Rig& g) { dir(0)(g), dir(0)(g); }, {0, 0, 0, 0}, {0x5A, 6, 116, 0, 10, 128, 4}, false},
        {[](Rig& g) { g.relayed(2); }, {0, 0, 0, 0}, {}, false},
        {off(1), {0, 0, 0, 1}, {0x5A, 7, 130, 116, 8 + 160, 10, 128, 47}, true}, // relay bits 128 + 16 * axis
        {off(1), {0, 0, 0, 0}, {0x5A, 7, 130, 116, 160, 10, 128, 39}, false},
    };
    int n = 0;
    for (const Step& s : steps) {
        s.act(r);
        const std::array<bool, 4> lit{green(r.main.Testcb[0]), green(r.main.TestOffcb[0]), green(r.main.Testcb[1]),
                                      green(r.main.TestOffcb[1])};
        EXPECT_EQ(lit, s.lit) << "step " << n;
        EXPECT_EQ(r.tick(), s.sent) << "step " << n;
        EXPECT_EQ(r.main.TestTmr->isActive(), s.running) << "step " << n++;
    }
}

TEST(TestModeWindow, PowerAndRatePromptsDropOutOfRangeAnswers)
{
    Rig r;
    struct Case {
        bool power;
        const char* answer;
        const char* offered; // the input box's default text
        const char* shown;
    };
    const Case cases[] = {
        {true, "100", "30.00", "100%"},  {true, "100.5", "100.00", "100%"}, {true, "-1", "100.00", "100%"},
        {true, "12.5", "100.00", "13%"}, {true, "", "12.50", "13%"}, // Cancel keeps the value
        {false, "256", "8.00", "8"},     {false, "255", "8.00", "255"},     {false, "abc", "255.00", "0"},
    };
    for (const Case& c : cases) {
        r.answer(c.answer, c.power ? &MainEntry::TestPtb_Click : &MainEntry::TestRatetb_Click);
        EXPECT_EQ(r.dialogs.prompts.back().prompt, c.power ? "Enter new power level for test-mode 0-100%"
                                                           : "Enter new rate of turn for test-mode 0-255");
        EXPECT_EQ(r.dialogs.prompts.back().title, "Brushless Motor Drive Parameter Entry");
        EXPECT_EQ(r.dialogs.inputDefaults.back(), c.offered) << c.answer;
        EXPECT_EQ(text(c.power ? r.main.TestPtb : r.main.TestRatetb), c.shown) << c.answer;
    }
    EXPECT_FALSE(r.main.GetDataModified()) << "test values are not configuration";
    QTest::mouseClick(r.main.Testcb[0], Qt::LeftButton);
    EXPECT_EQ(r.tick(), (Bytes{0x5A, 6, 116, 1, 0, 32, 155})) << "rate 0; the power kept is 12.5 %, not the 13 shown";
}

TEST(TestModeWindow, TuningDriveGoesOutOnceDirectOrRelayed)
{
    struct Case {
        bool qvane;
        int axis, motor;
        Bytes sent;
    };
    const Case cases[] = {
        {false, 0, 0, {0x5A, 4, 117, 1, 122}},
        {false, 0, 1, {0x5A, 4, 117, 2, 123}},
        {true, 2, 1, {0x5A, 5, 130, 117, 162, 158}},
        {true, 0, 0, {0x5A, 5, 130, 117, 129, 125}},
    };
    for (const Case& c : cases) {
        Rig r;
        if (c.qvane) r.relayed(c.axis);
        QTest::mouseClick(r.main.TestDrivecb[c.motor], Qt::LeftButton);
        EXPECT_EQ(r.take(), c.sent) << c.qvane << c.motor;
        EXPECT_FALSE(r.main.TestTmr->isActive()) << "sent once, not repeated";
    }
}

TEST(TestModeWindow, AboutOpensModalFromTheHelpMenuAndGoesWhenClosed)
{
    Rig r;
    r.main.show();
    r.main.mnuAbout->trigger();
    auto* about = r.main.findChild<FrmAbout*>();
    ASSERT_NE(about, nullptr);
    EXPECT_TRUE(about->isVisible());
    EXPECT_EQ(about->windowModality(), Qt::WindowModal);
    EXPECT_TRUE(about->windowTitle().startsWith("About"));
    about->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(r.main.findChild<FrmAbout*>(), nullptr);
}

TEST(TestModeWindow, DebugBytesReachTheDisplayAndTheLogWhenAsked)
{
    const std::string line(kDirectSampleLine, std::strlen(kDirectSampleLine) - 2); // without CR LF
    const std::string header(kDirectHeader, std::strlen(kDirectHeader) - 2);
    for (bool logged : {false, true}) {
        Rig r;
        QTemporaryDir dir;
        r.debug.LogDebugcb->setChecked(logged);
        const std::string path = dir.filePath("run.csv").toStdString();
        r.logging.LogFileName->setText(QString::fromStdString(path));
        r.logging.StartLog_Click();
        CyclicBytes msg = directSample();
        const int bytes[] = {1, 2, 3, 250, 128, 0, 77};
        for (int i = 0; i < 7; ++i) msg.byte(38 + i, bytes[i]);
        r.port.deliver(msg.frame());
        EXPECT_EQ(r.debug.GetDebugStrToLog(), "1,2,3,250,128,0,77");
        r.logging.StopLog_Click();
        std::ifstream in(path, std::ios::binary);
        const std::string file((std::istreambuf_iterator<char>(in)), {});
        EXPECT_EQ(file, logged
                            ? header +
                                  ",Msg Counter,HSL Flags,Gimbal Tilt,Loop Time,IMU Errors,Gyro Temp,Reset Cause\r\n" +
                                  line + ",1,2,3,250,128,0,77\r\n"
                            : header + "\r\n" + line + "\r\n");
    }
}

TEST(TestModeWindow, MotorOnePanelsFollowTheConfigurationBitsAndSetTheWidth)
{
    Rig r; // hidden: the first message sizes the window before it shows it
    const int wide = qRound(MainEntry::TwoMotorWidthTwips / 15.0 * r.main.logicalDpiX() / 96.0);
    using Act = std::function<void(Rig&)>;
    const auto direct = [](int bits) -> Act {
        return [bits](Rig& g) { g.port.deliver(CyclicBytes::direct().byte(35, bits).frame()); };
    };
    struct Step {
        Act act;
        bool shown;
        int width; // 0: narrower than both motors' width
    };
    const Step steps[] = {
        {direct(0), true, wide},
        {direct(8), false, 0},
        {direct(2), true, wide},
        {[](Rig& g) { g.relayed(); }, false, 0},
        {direct(10), false, 0},
        {direct(0), true, wide},
        {[](Rig& g) { g.main.resize(900, g.main.height()); }, true, 900}, // the user's width
        {direct(0), true, 900},
        {direct(8), false, 0},
    };
    int n = 0;
    for (const Step& s : steps) {
        s.act(r);
        EXPECT_EQ(r.main.MotorConfigfr[1]->isVisible(), s.shown) << "step " << n;
        EXPECT_EQ(r.main.MotorValuesfr[1]->isVisible(), s.shown) << "step " << n;
        if (s.width) EXPECT_EQ(r.main.width(), s.width) << "step " << n;
        else EXPECT_LT(r.main.width(), wide * 3 / 4) << "step " << n;
        ++n;
    }
}
