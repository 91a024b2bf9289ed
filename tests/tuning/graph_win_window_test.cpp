#include "config/memory_layout.h"
#include "fakes/program_rig.h"
#include "widgets/click_label.h"
#include "tuning/graph_view_window.h"
#include "tuning/graph_win_model.h"
#include "tuning/sweep_panel_window.h"
#include "cli/command.h"
#include "telemetry/cyclic_frames.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numbers>
#include <fstream>
#include <iterator>
#include <limits>
#include <sstream>

using namespace kdx;
using namespace kdx::test;

namespace {

const QColor kBrightGreen(65, 214, 15);
const QColor kDarkGreen(43, 138, 11);
const QColor kCyan(0, 255, 255);
const QColor kYellow(255, 255, 1);
const QColor kGrey(128, 128, 128);
const QColor kGreenFace(0, 255, 0);
const QColor kGreyFace(192, 192, 192);
const QColor kRedFace(255, 0, 0);

struct Rig : ProgramRig {
    GraphWin* win = &graph;
    // The module answers a read with its memory; then the gains are set as given.
    void loadConfiguration(const GainSet& motor0, const GainSet& motor1)
    {
        std::vector<uint8_t> img(60, 0);
        for (int b : {0, 30}) { // 20 kHz, 1:1, 14 poles
            img[b + layout::PwmPeriod] = 208;
            img[b + layout::PwmPeriod + 1] = 7;
            img[b + layout::DriveRatio + 1] = 64;
            img[b + layout::Poles] = 14;
        }
        port.deliver(buildFrame(120, img));
        ParamSet& p = main.config().params();
        for (int m = 0; m < 2; ++m) {
            const GainSet& g = m == 0 ? motor0 : motor1;
            p.PTerm[m] = g.P, p.IRate[m] = g.I, p.IAngle[m] = g.IA, p.DTerm[m] = g.D;
            p.StaticPower[m] = g.V1, p.DynamicPower[m] = g.V2, p.GainPerc[m] = g.G;
        }
    }
    void showAt(int width, int height)
    {
        win->resize(width, height);
        win->show();
        QApplication::processEvents();
    }
    QImage image() { return win->Graphpb->canvas().image(); }
    void feed(int count, float rate, float error, int motor = 0)
    {
        for (int i = 0; i < count; ++i) win->PutSample(motor, rate, error);
    }
};

const GainSet kExample{100, 20, 2.5f, 50, 10, 20, 100}; // P, I, IA, D, V1, V2, G

QColor face(QWidget* w) { return w->palette().color(QPalette::Button); }

// A one-pixel line may land on either neighbouring row; the colour must be on one of them.
bool colourAtRow(const QImage& img, int x, int y, const QColor& c)
{
    for (int dy = -1; dy <= 1; ++dy)
        if (y + dy >= 0 && y + dy < img.height() && img.pixelColor(x, y + dy) == c) return true;
    return false;
}

std::string readFile(const QString& path)
{
    std::ifstream in(path.toStdString(), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

} // namespace

TEST(GraphWinWindow, ControlsCarryTheSystemsNamesCaptionsAndTips)
{
    Rig r;
    EXPECT_EQ(r.win->windowTitle(), "Tuning Display");
    struct Case {
        const char* name;
        const char* caption;
        const char* tip;
    };
    const Case cases[] = {
        {"RepeatTrigcb", "Repeat", "The trace will trigger continuously"},
        {"StopTracecb", "STOP", "Stops the trace immediately"},
        {"Trace60scb", "60s", "One trace shows 60s of data"},
        {"DisplayClearcb", "On",
         "When on, the display is cleared after each sweep. When off, it is like a circular buffer."},
        {"Enablecb", "Enab", "When green, the KDX will use these settings instead of the config settings"},
        {"FullWidthcb", nullptr, "Expand the graph for the full width of the screen"},
        {"MemReccb0", "Recall",
         "Recalls the temporary memory gain settings. Goes green when memory matches the current gain settings."},
        {"SaveGaincb", "Update Config", "Write these settings to the main config window"},
        {"MotorSelcb1", nullptr, "Select motor #2"},
        {"LoadTracecb", "Load", "Loads a display file for viewing. The Gain settings are also loaded into Memory #1."},
        {"V2tb", nullptr, "The voltage used when the position error is > theshold"},
        {"AxisRatelb", "Axis Rate", nullptr},
        {"AxisAnglelb", "Axis Error", nullptr},
    };
    for (const Case& c : cases) {
        auto* w = r.win->findChild<QWidget*>(c.name);
        ASSERT_NE(w, nullptr) << c.name;
        EXPECT_EQ(w->toolTip(), c.tip ? c.tip : "") << c.name;
        if (!c.caption) continue;
        const auto* b = qobject_cast<QAbstractButton*>(w);
        EXPECT_EQ(b ? b->text() : qobject_cast<QLabel*>(w)->text(), c.caption) << c.name;
    }
    for (const char* name : {"PInccb1", "GDeccb0", "Y1lb8", "Y2lb0", "MemIDlb3", "Trace5scb", "InputValidInd"})
        EXPECT_NE(r.win->findChild<QWidget*>(name), nullptr) << name;
    EXPECT_EQ(r.win->GainMsgTmr->interval(), 40);
    // The legends are written in their trace's colour.
    EXPECT_EQ(r.win->AxisRatelb->palette().color(QPalette::WindowText), kCyan);
    EXPECT_EQ(r.win->AxisAnglelb->palette().color(QPalette::WindowText), kYellow);
    // Opening state: Repeat armed, Disp Clear on, 10 s sweeps, STOP red; Auto, Default and
    // the motor buttons grey.
    for (QWidget* on : std::initializer_list<QWidget*>{r.win->RepeatTrigcb, r.win->DisplayClearcb, r.win->Trace10scb})
        EXPECT_EQ(face(on), kGreenFace) << on->objectName().toStdString();
    EXPECT_EQ(face(r.win->StopTracecb), kRedFace);
    for (QWidget* off : std::initializer_list<QWidget*>{r.win->AutoScalecb, r.win->DefaultScalecb, r.win->MotorSelcb[0],
                                                        r.win->MotorSelcb[1], r.win->NowTrigcb})
        EXPECT_EQ(face(off), kGreyFace) << off->objectName().toStdString();
}

TEST(GraphWinWindow, ASweepIsDrawnInTraceColoursOverTheGrid)
{
    Rig r;
    r.showAt(1000, 720);
    QImage img = r.image();
    ASSERT_EQ(img.size(), r.win->Graphpb->size());
    ASSERT_GT(img.height(), 100);

    // One full 10 s sweep: rate 15 on the -30..30 axis is a quarter down, error -1 on
    // the -2..2 axis three quarters down.
    r.feed(1001, 15.0f, -1.0f);
    img = r.image();
    const int w = img.width(), h = img.height();
    const int x = w * 33 / 100; // between two vertical grid lines
    EXPECT_TRUE(colourAtRow(img, x, h / 4, kCyan));
    EXPECT_TRUE(colourAtRow(img, x, 3 * h / 4, kYellow));
    EXPECT_TRUE(colourAtRow(img, x, h / 2, kBrightGreen)) << "zero line";
    EXPECT_TRUE(colourAtRow(img, x, 3 * h / 10, kDarkGreen)) << "grid line";
    EXPECT_EQ(img.pixelColor(x, h * 35 / 100), kGrey) << "background";

    // A bigger window: the image is made anew at the graph's size and redrawn from the buffer.
    r.win->resize(1200, 820);
    QApplication::processEvents();
    img = r.image();
    ASSERT_EQ(img.size(), r.win->Graphpb->size());
    ASSERT_NE(img.height(), h);
    EXPECT_TRUE(colourAtRow(img, img.width() / 3 + 3, img.height() / 4, kCyan));
    EXPECT_TRUE(colourAtRow(img, img.width() / 3 + 3, 3 * img.height() / 4, kYellow));

    // No area (a minimised graph): nothing is drawn and nothing breaks; the graph
    // comes back whole when it has room again.
    r.win->Graphpb->setFixedHeight(0);
    QApplication::processEvents();
    EXPECT_TRUE(r.image().isNull());
    r.feed(20, -15.0f, 1.0f);
    r.win->Graphpb->setMinimumHeight(200);
    r.win->Graphpb->setMaximumHeight(QWIDGETSIZE_MAX);
    QApplication::processEvents();
    img = r.image();
    ASSERT_FALSE(img.isNull());
    EXPECT_TRUE(colourAtRow(img, img.width() / 100, 3 * img.height() / 4, kCyan)) << "the new sweep";
}

TEST(GraphWinWindow, NaNSamplesDrawNothing)
{
    Rig r;
    r.showAt(1000, 720);
    r.feed(200, 15.0f, -1.0f);
    r.feed(100, std::nanf(""), std::numeric_limits<float>::infinity());
    const QImage img = r.image();
    EXPECT_TRUE(colourAtRow(img, img.width() / 10, img.height() / 4, kCyan)) << "earlier samples still shown";
}

TEST(GraphWinWindow, WithDisplayClearOffACursorRunsAheadOfTheNewPoint)
{
    Rig r;
    r.showAt(1000, 720);
    r.feed(1001, 15.0f, -1.0f); // one sweep to overwrite
    r.win->DisplayClearcb_Click();
    EXPECT_EQ(r.win->DisplayClearcb->text(), "Off");
    r.feed(301, -15.0f, 1.0f); // the new sweep reaches sample 300
    const QImage img = r.image();
    const int w = img.width(), h = img.height();
    const auto column = [&](int sample) { return static_cast<int>(sample * static_cast<double>(w) / 1000); };
    bool white = false;
    for (int y = h / 2 - h / 10; y < h / 2 && !white; ++y) white = img.pixelColor(column(308), y) == Qt::white;
    EXPECT_TRUE(white) << "the cursor 8 samples ahead";
    EXPECT_TRUE(colourAtRow(img, column(150), 3 * h / 4, kCyan)) << "new sweep drawn";
    EXPECT_FALSE(colourAtRow(img, column(150), h / 4, kCyan)) << "old sweep erased behind the cursor";
    EXPECT_TRUE(colourAtRow(img, column(600), h / 4, kCyan)) << "old sweep still ahead";
}

TEST(GraphWinWindow, OnANarrowLongSweepTheCursorNeverWipesTheNewestPoints)
{
    Rig r;
    r.showAt(700, 600);
    r.win->TraceDurationcb_Click(3); // 60 s: several samples to a pixel
    r.feed(6001, 0.0f, 0.0f);
    r.win->DisplayClearcb_Click();
    // A rate level inside the cursor's band just above the zero line.
    const QImage before = r.image();
    const int h = before.height(), mid = h / 2;
    const float level = 30.0f * 9.0f / static_cast<float>(mid); // about 9 px above the middle
    r.feed(3001, level, 0.0f);
    const QImage img = r.image();
    const int w = img.width(), newest = static_cast<int>(3000.0 * w / 6000);
    for (int x = newest - 3; x <= newest; ++x)
        EXPECT_TRUE(colourAtRow(img, x, mid - 9, kCyan)) << "column " << x << " of newest " << newest;
}

TEST(GraphWinWindow, AxisLabelsShowTheRangeLevelWithTheGridLines)
{
    Rig r;
    r.showAt(1000, 720);
    const int h = r.win->Graphpb->height();
    struct Case {
        QLabel* label;
        const char* text;
        int tenth;
    };
    for (const Case& c : {Case{r.win->Y1lb[0], "24.0", 1},
                          {r.win->Y1lb[4], "0.0", 5},
                          {r.win->Y1lb[8], "-24.0", 9},
                          {r.win->Y2lb[0], "1.6", 1}}) {
        EXPECT_EQ(c.label->text(), c.text);
        const int centre = c.label->mapTo(r.win, c.label->rect().center()).y();
        const int line = r.win->Graphpb->mapTo(r.win, QPoint(0, h * c.tenth / 10)).y();
        EXPECT_NEAR(centre, line, 2) << c.text;
    }
}

TEST(GraphWinWindow, GainMessageGoesToTheModuleTheWayTheTelemetryCame)
{
    struct Case {
        const char* name;
        bool relayed;
        int motor;
        std::vector<uint8_t> sent;
    };
    // P 100 % = 128, I 20, D 50 % = 64, G 100 % = 256, V1 10 V = 2560, V2 20 V = 5120, IA 2.5 = 40
    // sixteenths, each low byte first; relayed to Pan: 130, 115, then 128 + 16 x 2.
    const Case cases[] = {
        {"direct, motor 1", false, 0, {0x5A, 16, 115, 0, 128, 0, 20, 64, 0, 0, 1, 0, 10, 0, 20, 40, 158}},
        {"direct, motor 2", false, 1, {0x5A, 16, 115, 1, 128, 0, 20, 64, 0, 0, 1, 0, 10, 0, 20, 40, 159}},
        {"through a Q-Vane, Pan", true, 0, {0x5A, 17, 130, 115, 160, 128, 0, 20, 64, 0, 0, 1, 0, 10, 0, 20, 40, 193}},
    };
    for (const Case& c : cases) {
        Rig r;
        if (c.relayed) {
            r.main.KDXAxisSelcb[2]->click();
            r.port.deliver(CyclicBytes::relayed().byte(2, 2).byte(20, 16).frame());
        } else {
            r.port.deliver(CyclicBytes::direct().frame());
        }
        r.loadConfiguration(kExample, kExample);
        QTest::mouseClick(r.win->MotorSelcb[c.motor], Qt::LeftButton);
        r.win->Enablecb->click();
        ASSERT_TRUE(r.win->GainMsgTmr->isActive()) << c.name;
        r.port.written.clear();
        r.win->GainMsgTmr_Timer();
        EXPECT_EQ(r.port.written, c.sent) << c.name;
    }
}

TEST(GraphWinWindow, EachGainAsksInItsOwnWords)
{
    Rig r;
    r.loadConfiguration(kExample, kExample);
    r.win->MotorSelcb_Click(0);
    const std::pair<ClickLabel*, const char*> cases[] = {
        {r.win->Ptb, "Enter new P term % -12800..12700"},
        {r.win->Itb, "Enter new I term (-32000 .. 32000) "},
        {r.win->IAtb, "Enter new I angle (0..15.9) "},
        {r.win->Dtb, "Enter new D term (-12800%..12700%) "},
        {r.win->V1tb, "Enter Voltage (low)"},
        {r.win->V2tb, "Enter Voltage (high)"},
        {r.win->Gtb, "Enter new Gain % (-12800..12700) "},
    };
    for (const auto& [label, prompt] : cases) {
        r.dialogs.inputs.push_back("1");
        QTest::mouseClick(label, Qt::LeftButton);
        ASSERT_FALSE(r.dialogs.prompts.empty()) << prompt;
        EXPECT_EQ(r.dialogs.prompts.back().prompt, prompt);
        EXPECT_EQ(r.dialogs.prompts.back().title, "Gain Tuning Data Entry");
        EXPECT_EQ(label->text().toStdString().substr(0, 1), "1") << prompt << ": the answer is shown";
    }
}

TEST(GraphWinWindow, StepButtonPutsTheTunedGainsIntoUseAtOnce)
{
    Rig r;
    r.loadConfiguration(kExample, kExample);
    r.win->MotorSelcb_Click(0);
    EXPECT_FALSE(r.win->GainMsgTmr->isActive());
    QTest::mouseClick(r.main.Testcb[0], Qt::LeftButton); // a test drive in progress
    EXPECT_EQ(face(r.main.Testcb[0]), kGreenFace);
    QTest::mouseClick(r.win->PInccb[1], Qt::LeftButton);
    EXPECT_NE(face(r.main.Testcb[0]), kGreenFace) << "tuning cancels the test drive";
    EXPECT_EQ(r.win->Ptb->text(), "110%");
    EXPECT_TRUE(r.win->Enablecb->isChecked());
    EXPECT_TRUE(r.win->GainMsgTmr->isActive());
    EXPECT_EQ(face(r.win->Enablecb), kGreenFace);
    EXPECT_EQ(face(r.win->SaveGaincb), kGreenFace) << "modified";
    r.port.written.clear();
    r.win->GainMsgTmr_Timer();
    ASSERT_EQ(r.port.written.size(), 17u);
    EXPECT_EQ(r.port.written[4], 141) << "110 % x 1.28 = 140.8, rounded";

    // A typed value, then "Update Config" writes it back and the panel is clean again.
    r.dialogs.inputs.push_back("250");
    QTest::mouseClick(r.win->Ptb, Qt::LeftButton);
    EXPECT_EQ(r.win->Ptb->text(), "250%");
    QTest::mouseClick(r.win->SaveGaincb, Qt::LeftButton);
    EXPECT_EQ(r.main.config().params().PTerm[0], 250.0f);
    EXPECT_EQ(face(r.win->SaveGaincb), kGreyFace);
    EXPECT_FALSE(r.win->GetDataModified());

    // The main window switches the gain message off.
    r.win->SetEnable(true);
    EXPECT_FALSE(r.win->Enablecb->isChecked());
    EXPECT_FALSE(r.win->GainMsgTmr->isActive());
    EXPECT_EQ(face(r.win->Enablecb), kGreyFace);
}

TEST(GraphWinWindow, MotorSelectionNeedsALoadedConfiguration)
{
    for (const bool loaded : {false, true}) {
        Rig r;
        if (loaded) r.loadConfiguration(kExample, GainSet{200, 30, 1, 60, 5, 6, 50});
        QTest::mouseClick(r.win->MotorSelcb[1], Qt::LeftButton);
        EXPECT_EQ(face(r.win->MotorSelcb[1]), loaded ? kGreenFace : kGreyFace) << loaded;
        EXPECT_EQ(face(r.win->MotorSelcb[0]), kGreyFace) << loaded;
        EXPECT_EQ(r.win->Ptb->text(), loaded ? "200%" : "0%") << loaded;

        // Without gains "Enab" will not stay ticked, no step does anything, no value asks.
        if (!loaded) QTest::mouseClick(r.win->Ptb, Qt::LeftButton);
        EXPECT_TRUE(r.dialogs.prompts.empty());
        r.win->Enablecb->click();
        EXPECT_EQ(r.win->Enablecb->isChecked(), loaded) << loaded;
        EXPECT_EQ(r.win->GainMsgTmr->isActive(), loaded) << loaded;
        QTest::mouseClick(r.win->GInccb[0], Qt::LeftButton);
        EXPECT_EQ(r.win->Gtb->text(), loaded ? "51%" : "0%") << loaded;

        // The graph records the selected motor only.
        r.feed(5, 1.0f, 0.0f, 0);
        const int afterMotor0 = r.win->model().traces().SampleIndex;
        r.feed(5, 1.0f, 0.0f, 1);
        EXPECT_EQ(r.win->model().traces().SampleIndex - afterMotor0, loaded ? 5 : 0) << loaded;
    }
}

TEST(GraphWinWindow, SpaceBarStopsAndStartsTheTraceWhereverTheFocusIs)
{
    Rig r;
    r.showAt(1000, 720);
    r.feed(10, 1.0f, 0.0f);
    const int index = r.win->model().traces().SampleIndex;

    QTest::keyClick(r.win, Qt::Key_Space);
    EXPECT_EQ(r.win->StopTracecb->text(), "START");
    EXPECT_EQ(face(r.win->StopTracecb), kGreenFace);
    r.feed(10, 1.0f, 0.0f);
    EXPECT_EQ(r.win->model().traces().SampleIndex, index) << "stopped: nothing recorded";

    // With the focus on a button the space still means START, not a click on the button.
    r.win->RepeatTrigcb->setFocus();
    QTest::keyClick(r.win->RepeatTrigcb, Qt::Key_Space);
    EXPECT_EQ(r.win->StopTracecb->text(), "STOP");
    EXPECT_EQ(face(r.win->StopTracecb), kRedFace);
    EXPECT_EQ(face(r.win->RepeatTrigcb), kGreenFace) << "Repeat not toggled";
    r.feed(10, 1.0f, 0.0f);
    EXPECT_EQ(r.win->model().traces().SampleIndex, index + 10) << "resumes at the same index";

    // Shift+Space too, and every key-down of a held space bar, the repeats included.
    QTest::keyClick(r.win->RepeatTrigcb, Qt::Key_Space, Qt::ShiftModifier);
    EXPECT_EQ(r.win->StopTracecb->text(), "START");
    EXPECT_EQ(face(r.win->RepeatTrigcb), kGreenFace) << "Shift+Space is no click on the focused button";
    for (const char* after : {"STOP", "START", "STOP"}) {
        QKeyEvent repeat(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, " ", /*autorep=*/true);
        QApplication::sendEvent(r.win->RepeatTrigcb, &repeat);
        EXPECT_EQ(r.win->StopTracecb->text(), after);
    }
}

TEST(GraphWinWindow, TraceFilesSaveAndLoadThroughTheFileDialogs)
{
    Rig r;
    r.loadConfiguration(kExample, kExample);
    r.win->MotorSelcb_Click(0);
    r.showAt(1000, 720);
    r.feed(1001, 15.0f, -1.0f);
    QTemporaryDir dir;
    const QString path = QDir(dir.path()).filePath("run.btf");

    r.dialogs.files.push_back(path.toStdString());
    QTest::mouseClick(r.win->SaveTracecb, Qt::LeftButton);
    ASSERT_EQ(r.dialogs.fileRequests.size(), 1u);
    EXPECT_EQ(r.dialogs.fileRequests[0].filter, "KDX Tuning Files (*.btf)|*.btf|All Files (*.*)|*.*");
    EXPECT_EQ(r.dialogs.fileRequests[0].defaultExt, "btf");
    const std::string text = readFile(path);
    EXPECT_EQ(text.substr(0, 53), "AxisRate, AxisError, P,I,IA,D,V1,V2,G,Spare1,Spare2\r\n");

    // A different sweep, then the file: its trace is shown, capture is off, and its
    // gains sit in memory #1, matching the panel.
    r.feed(1001, -15.0f, -1.0f);
    r.dialogs.files.push_back(path.toStdString());
    r.win->mnuLoad->trigger();
    const QImage img = r.image();
    EXPECT_TRUE(colourAtRow(img, img.width() / 3, img.height() / 4, kCyan));
    EXPECT_FALSE(colourAtRow(img, img.width() / 3, 3 * img.height() / 4, kCyan));
    EXPECT_EQ(face(r.win->RepeatTrigcb), kGreyFace);
    EXPECT_EQ(face(r.win->MemStorecb[0]), kGreenFace);
    EXPECT_EQ(face(r.win->MemReccb[0]), kGreenFace);
    r.feed(50, -15.0f, -1.0f);
    EXPECT_TRUE(colourAtRow(r.image(), img.width() / 3, img.height() / 4, kCyan)) << "not overwritten by live data";

    // Cancelled dialogs do nothing.
    r.dialogs.files.push_back(std::nullopt);
    r.dialogs.files.push_back(std::nullopt);
    r.win->SaveTracecb_Click();
    r.win->LoadTracecb_Click();
    EXPECT_EQ(readFile(path), text);
    EXPECT_TRUE(r.dialogs.boxes.empty());
}

TEST(GraphWinWindow, CloseBoxAndWindowCloseHideUntilTheProgramUnloads)
{
    Rig r;
    r.showAt(800, 600);
    EXPECT_FALSE(r.win->close());
    EXPECT_TRUE(r.win->isHidden());
    EXPECT_TRUE(r.dialogs.boxes.empty()) << "nothing tuned, nothing asked";

    // Tuned gains are offered to the configuration on Close: No keeps them in the panel only,
    // Yes carries them over.
    r.loadConfiguration(kExample, kExample);
    r.win->MotorSelcb_Click(0);
    for (const Answer a : {Answer::No, Answer::Yes}) {
        r.dialogs.inputs.push_back("250");
        QTest::mouseClick(r.win->Ptb, Qt::LeftButton);
        r.win->show();
        r.dialogs.answers.push_back(a);
        r.win->mnuClose->trigger();
        EXPECT_TRUE(r.win->isHidden());
        ASSERT_FALSE(r.dialogs.boxes.empty());
        EXPECT_EQ(r.dialogs.boxes.back().title, "Gain Modified");
        EXPECT_EQ(r.main.config().params().PTerm[0], a == Answer::Yes ? 250.0f : 100.0f);
        EXPECT_EQ(r.win->GetDataModified(), a == Answer::No);
    }
    r.dialogs.boxes.clear();

    // File, Exit is the program's quit path, with its question.
    r.main.gainStore().PutP(120, 0);
    r.dialogs.answers.push_back(Answer::No);
    r.win->mnuExit->trigger();
    ASSERT_EQ(r.dialogs.boxes.size(), 1u);
    EXPECT_EQ(r.dialogs.boxes[0].title, "Tuning Data Modified");
    r.win->show();
    r.win->unload();
    EXPECT_TRUE(r.win->isHidden());
    EXPECT_FALSE(r.win->GainMsgTmr->isActive());
}

// ---- the sweep panel: numbers, pinned reference, exports ------------------------------

namespace {

const QColor kRateReference(83, 172, 172);

// A tuning file of `n` sample lines.
std::string btf(int n, const std::function<std::pair<double, double>(int)>& sample)
{
    std::string s = "AxisRate, AxisError, P,I,IA,D,V1,V2,G,Spare1,Spare2\r\n";
    char buf[64];
    for (int k = 0; k < n; ++k) {
        const auto [rate, error] = sample(k);
        std::snprintf(buf, sizeof buf, "%.2f,%.2f", rate, error);
        s += buf;
        s += k == 0 ? ",100.00,20.00,2.00,50.00,15.00,40.00,100.00,0,0\r\n" : "\r\n";
    }
    return s;
}

// 10 deg/s at 5 Hz; the error a square wave of +-0.25 deg.
std::pair<double, double> sineAndSquare(int k)
{
    return {10 * std::sin(2 * std::numbers::pi * 5 * k / 100.0), k % 2 ? -0.25 : 0.25};
}

// The set point jumps by 4 deg at sample 100; the axis follows at 40 deg/s in 10 samples.
std::pair<double, double> rampStep(int k)
{
    if (k < 100) return {0, 0};
    const double error = std::max(0.0, 4 - 0.4 * (k - 100));
    return {k <= 110 ? 40.0 : 0.0, error};
}

QString writeTemp(const QTemporaryDir& dir, const char* name, const std::string& text)
{
    const QString path = dir.filePath(name);
    std::ofstream(path.toStdString(), std::ios::binary) << text;
    return path;
}

std::vector<std::string> texts(const std::array<QLabel*, SweepPanel::kMetricCount>& labels)
{
    std::vector<std::string> out;
    for (QLabel* l : labels) out.push_back(l->text().toStdString());
    return out;
}

int pixelsOf(const QImage& img, const QColor& c)
{
    int n = 0;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x) n += img.pixelColor(x, y) == c;
    return n;
}

} // namespace

TEST(GraphWinWindow, SweepPanelShowsTheNumbersOfALoadedFile)
{
    // Sine: RMS 10 / sqrt(2) = 7.07, all its power at 5 Hz. Square: RMS and peak 0.25.
    // Ramp: error RMS sqrt(0.16 * (1 + 4 + ... + 100) / 200) = 0.555, peak 4, rate RMS
    // sqrt(11 * 1600 / 200) = 9.38; f = 0.1 at 1 sample, 0.9 at 9 (rise 0.080 s), last
    // outside 5 % at 9 with 0.1, in at 10 with 0: settled at 9.5 samples, 0.095 s.
    struct Case {
        const char* name;
        int lines;
        std::pair<double, double> (*sample)(int);
        std::vector<std::string> shown; // "*": not worked out
    };
    const Case cases[] = {
        {"sine.btf", 1000, sineAndSquare, {"0.250", "0.250", "7.07", "5.00", "1.00", "-", "-", "-"}},
        {"step.btf", 200, rampStep, {"0.555", "4.000", "9.38", "*", "*", "0.0", "0.080", "0.095"}},
    };
    Rig r;
    QTemporaryDir dir;
    for (const Case& c : cases) {
        r.win->LoadTuningFileOnInit(writeTemp(dir, c.name, btf(c.lines, c.sample)).toStdString());
        const auto shown = texts(r.win->SweepPanelfr->Currentlb);
        for (std::size_t i = 0; i < c.shown.size(); ++i) {
            if (c.shown[i] == "*") continue;
            EXPECT_EQ(shown[i], c.shown[i]) << c.name << " metric " << i;
        }
        EXPECT_EQ(texts(r.win->SweepPanelfr->Referencelb), std::vector<std::string>(8)) << c.name;
    }
}

TEST(GraphWinWindow, PinnedReferenceOutlivesGainChangesAndNewSweeps)
{
    Rig r;
    r.loadConfiguration(kExample, kExample);
    r.win->MotorSelcb_Click(0);
    r.showAt(1000, 800);
    SweepPanel& panel = *r.win->SweepPanelfr;
    EXPECT_FALSE(panel.Pincb->isEnabled()); // nothing to pin yet
    QTemporaryDir dir;
    r.win->LoadTuningFileOnInit(writeTemp(dir, "before.btf", btf(1000, sineAndSquare)).toStdString());
    panel.Pincb_Click();
    EXPECT_EQ(panel.Pincb->text(), "Unpin");

    r.win->Inccb_Click(Gain::P, 1);
    r.win->RepeatTrigcb_Click();
    for (int k = 0; k < 1001; ++k) r.win->PutSample(0, 0.0f, k % 2 ? -0.125f : 0.125f);

    EXPECT_EQ(texts(panel.Referencelb),
              (std::vector<std::string>{"0.250", "0.250", "7.07", "5.00", "1.00", "-", "-", "-"}));
    EXPECT_EQ(panel.Currentlb[0]->text(), "0.125");
    EXPECT_EQ(panel.Changelb[0]->text(), "-50 %");
    EXPECT_EQ(panel.Changelb[0]->toolTip(), "RMS error 0.250 -> 0.125, -50 %");
    EXPECT_EQ(panel.Changelb[2]->text(), "-100 %"); // the rate went from 7.07 to 0
    EXPECT_EQ(panel.Changelb[3]->text(), "");       // a flat rate has no frequency
    // The reference is drawn behind the new sweep, and goes with Unpin.
    EXPECT_GT(pixelsOf(r.image(), kRateReference), 500);
    panel.Pincb_Click();
    EXPECT_EQ(pixelsOf(r.image(), kRateReference), 0);
    EXPECT_EQ(panel.Referencelb[0]->text(), "");
    EXPECT_EQ(panel.Changelb[0]->text(), "");
}

TEST(GraphWinWindow, ExportedSweepAnalysesToThePanelsNumbers)
{
    Rig r;
    r.loadConfiguration(kExample, kExample);
    r.win->MotorSelcb_Click(0);
    r.win->TraceDurationcb_Click(0);
    for (int k = 0; k < 402; ++k) // the opening repeat sweep: 401 samples
        r.win->PutSample(0, static_cast<float>(3.3 * std::sin(k * 0.9)),
                         static_cast<float>(0.0123 * std::cos(k * 0.2)));
    QTemporaryDir dir;
    const QString path = dir.filePath("sweep.csv");
    r.dialogs.files.push_back(path.toStdString());
    r.win->SweepPanelfr->mnuExportCsv->trigger();

    const std::string csv = readFile(path);
    EXPECT_EQ(csv.substr(0, 97),
              "# kdxtool sweep: P 100.00, I 20.00, IA 2.50, D 50.00, V1 10.00, V2 20.00, G 100.00; samples 401, ");
    EXPECT_NE(csv.find("\r\ntime_s,rate,error\r\n0.00,0,0.0123\r\n0.01,"), std::string::npos);
    std::ostringstream out, err;
    cli::CommandIo io{out, err};
    ASSERT_EQ(cli::runKdxctl({"analyse", "--tsv", path.toStdString()}, io), 0) << err.str();
    const QStringList row = QString::fromStdString(out.str()).split('\n')[1].split('\t');
    const auto shown = texts(r.win->SweepPanelfr->Currentlb);
    const int columns[] = {2, 3, 4, 5, 6, 9, 10, 11}; // err_rms .. share, overshoot_pct .. settle_s
    for (std::size_t i = 0; i < shown.size(); ++i)
        EXPECT_EQ(row[columns[i]].toStdString(), shown[i] == "-" ? "" : shown[i]) << "metric " << i;
    EXPECT_EQ(row[1], "401");
}

TEST(GraphWinWindow, GraphPictureIsTwiceItsSizeWithItsLabels)
{
    Rig r;
    r.showAt(1000, 800);
    QTemporaryDir dir;
    const QString path = dir.filePath("graph.png");
    r.dialogs.files.push_back(path.toStdString());
    r.win->SweepPanelfr->mnuExportPng->trigger();
    const QImage png(path);
    // The Y1 labels' column, the picture and the Y2 labels' column, under the legend.
    const QWidget* left = r.win->Y1lb[0]->parentWidget();
    const QWidget* right = r.win->Y2lb[0]->parentWidget();
    const int width = right->geometry().right() - left->geometry().left() + 1;
    const int height = r.win->Graphpb->geometry().bottom() - r.win->AxisRatelb->geometry().top() + 1;
    EXPECT_EQ(png.size(), QSize(2 * width, 2 * height));
    // The graph's grey fills most of its area, twice over in each direction.
    EXPECT_GT(pixelsOf(png, kGrey), 4 * r.win->Graphpb->width() * r.win->Graphpb->height() / 2);
}
