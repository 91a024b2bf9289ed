// The main window's side of the cyclic telemetry: decoding into the live values,
// the "Current Values" panel, the target mode, and the first-telemetry actions.
#include "core/colour.h"
#include "widgets/click_label.h"
#include "mainwindow/main_entry.h"
#include "platform/qt_guard.h"
#include "telemetry/log_line.h"
#include "telemetry/debug_channel.h"
#include "telemetry/telemetry_log.h"
#include "tuning/tuning_display.h"
#include "widgets/face_colour.h"
#include "widgets/text.h"

#include <QFontMetrics>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace kdx {

namespace {

} // namespace

void MainEntry::PutCyclicQvaneMsg(const MsgView& msg)
{
    SetTargetIsQVane(true);
    ShowQVaneAxis(msg[2]);
    const CyclicTelemetry decoded = decodeCyclicQvaneMsg(msg);
    applyDecoded(live, decoded);
    peers_.tuning.PutSample(0, live.motor[0].AxisRate, live.motor[0].AxisError);
    scheduleLiveValues();
    writeLogLine();
    if (!TelemetrySeen) {
        RequestMemoryRead(true);
        TelemetrySeen = true;
    }
    if (!DisplayVisible && (live.InputValid[0] || live.InputValid[1] || live.InputValid[2])) SetDisplayVisible();
}

void MainEntry::PutCyclicMsg(const MsgView& msg)
{
    SetTargetIsQVane(false);
    ShowQVaneAxis(3);
    const CyclicTelemetry decoded = decodeCyclicMsg(msg);
    applyDecoded(live, decoded);
    showMotorOnePanels((live.MotorConfigBits & SingleMotorBit) == 0);
    peers_.debug.PutDebugData(live.debug);
    ShowVersion(live.VersionMajor, live.VersionMinor);
    peers_.tuning.PutSample(0, live.motor[0].AxisRate, live.motor[0].AxisError);
    peers_.tuning.PutSample(1, live.motor[1].AxisRate, live.motor[1].AxisError);
    scheduleLiveValues();
    writeLogLine();
    if (!TelemetrySeen) {
        RequestMemoryRead(true);
        TelemetrySeen = true;
    }
    if (!DisplayVisible) SetDisplayVisible();
    QVaneConnectFr->setVisible(false);
}

void MainEntry::SetTargetIsQVane(bool value)
{
    if (value && !TargetIsQVane) {
        showMotorOnePanels(false); // a Q-Vane reports one axis at a time
        peers_.tuning.SetSecondMotorVisible(false);
    } else if (!value && TargetIsQVane) {
        peers_.tuning.SetSecondMotorVisible(true);
    }
    TargetIsQVane = value;
}

// Motor 1's panels, and the window width that goes with them: the two-motor width when
// they show, the width of one motor's panels when they go. The width is set only when
// the panels appear or go, so a width the user chose afterwards stays.
void MainEntry::showMotorOnePanels(bool visible)
{
    if (motorOneShown_ && *motorOneShown_ == visible) return;
    motorOneShown_ = visible;
    MotorConfigfr[1]->setVisible(visible);
    MotorValuesfr[1]->setVisible(visible);
    setFormWidthTwips(visible ? TwoMotorWidthTwips : 0); // 0: as narrow as one motor's column allows
}

// Form widths are in twips: 15 to the pixel at 96 dpi, scaled with the screen. The
// layout's minimum wins where the fonts need more (and is what 0 asks for).
void MainEntry::setFormWidthTwips(int twips)
{
    const int px = qRound(twips / 15.0 * logicalDpiX() / 96.0);
    centralWidget()->layout()->activate();
    layout()->activate();
    resize(std::max(px, minimumSizeHint().width()), height());
}

void MainEntry::ShowLiveValues()
{
    fillLiveCaptions(live, captions_);
    for (std::size_t m = 0; m < 2; ++m) {
        const MotorCaptions& c = captions_.motor[m];
        showText(ElecAngletb[m], c.ElecAngletb);
        showText(AxisRatetb[m], c.AxisRatetb);
        showText(AxisErrortb[m], c.AxisErrortb);
        showText(AxisPtb[m], c.AxisPtb);
        showText(AxisItb[m], c.AxisItb);
        showText(AxisDtb[m], c.AxisDtb);
        showText(ExtGaintb[m], c.ExtGaintb);
        showText(AxisPowertb[m], c.AxisPowertb);
        showText(AxisAngletb[m], c.AxisAngletb);
        paintFace(TestDrivecb[m], c.TestDrivecbColour);
    }
    showText(Voltagetb, captions_.Voltagetb);
    showText(Switchtb, captions_.Switchtb);
    if ((live.SwitchBits & ButtonSwitchBit) && !ButtonFr->isVisibleTo(this)) ButtonFr->setVisible(true);
    if (shownSelectedValid_.changed(live.SelectedInputValid)) peers_.tuning.SetInputValid(live.SelectedInputValid);
    for (std::size_t i = 0; i < 3; ++i)
        if (shownValid_[i].changed(live.InputValid[i])) paintFace(Validitiescb[i], validityColour(live.InputValid[i]));
    DebIDtb->setCaption(QString::number(config_.debugId()));
}

std::string MainEntry::GetTelemetryFileTitles() const
{
    if (peers_.debug.GetLogDebugData()) return telemetryFileTitles(TargetIsQVane, peers_.debug.GetDebugTitles());
    return telemetryFileTitles(TargetIsQVane);
}

void MainEntry::writeLogLine()
{
    if (!peers_.log.GetLoggingDataToFile()) return;
    logLine_.clear();
    if (peers_.debug.GetLogDebugData()) appendTelemetryLogLine(logLine_, live, peers_.debug.GetDebugStrToLog());
    else appendTelemetryLogLine(logLine_, live);
    peers_.log.PutStringToLog(logLine_);
}

void MainEntry::SetDisplayVisible()
{
    peers_.windows.showWindow(ProgramWindow::DataLogging);
    peers_.windows.hideWindow(ProgramWindow::Wait);
    peers_.windows.showWindow(ProgramWindow::Tuning);
    show();
    peers_.windows.hideWindow(ProgramWindow::CommsLink);
    DisplayVisible = true;
    if (afterReveal) afterReveal();
}

void MainEntry::buildLiveValues(int m, QGroupBox* frame)
{
    auto* grid = new QGridLayout;
    static_cast<QVBoxLayout*>(frame->layout())->addLayout(grid);
    struct Row {
        std::array<QLabel*, 2>* labels;
        const char* name;
        const char* caption;
    };
    const Row rows[] = {
        {&AxisAngletb, "AxisAngletb", "Angle (deg)"},
        {&AxisRatetb, "AxisRatetb", "Rate"},
        {&AxisErrortb, "AxisErrortb", "Error (deg)"},
        {&AxisPtb, "AxisPtb", "P"},
        {&AxisItb, "AxisItb", "I"},
        {&AxisDtb, "AxisDtb", "D"},
        {&ExtGaintb, "ExtGaintb", "Ext gain"},
        {&ElecAngletb, "ElecAngletb", "Elec angle"},
        {&AxisPowertb, "AxisPowertb", "Power"},
    };
    int row = 0;
    for (const Row& r : rows) {
        auto* value = new QLabel(frame);
        value->setObjectName(QString("%1%2").arg(r.name).arg(m));
        value->setFrameShape(QFrame::Panel);
        value->setFrameShadow(QFrame::Sunken);
        value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        // A live value changes a hundred times a second. Opaque and of fixed size, the
        // label repaints only itself: no relayout, no repaint of the panel behind it.
        value->setAutoFillBackground(true);
        const QFontMetrics fm = value->fontMetrics();
        value->setFixedSize(std::max(64, fm.horizontalAdvance("-00000.00") + 2 * value->frameWidth() + 8),
                            fm.height() + 2 * value->frameWidth() + 4);
        (*r.labels)[static_cast<std::size_t>(m)] = value;
        grid->addWidget(new QLabel(r.caption, frame), row, 0);
        grid->addWidget(value, row, 1);
        ++row;
    }
    // Test mode for this motor: direction test, off, and the tuning drive.
    const auto idx = static_cast<std::size_t>(m);
    auto* test = new QHBoxLayout;
    Testcb[idx] = new QPushButton(qs(testmode::TestcbCaption), frame);
    Testcb[idx]->setObjectName(QString("Testcb%1").arg(m));
    Testcb[idx]->setToolTip(qs(testmode::TestcbTip));
    connect(Testcb[idx], &QPushButton::clicked, this, [this, m] { guarded("Testcb_Click", [&] { Testcb_Click(m); }); });
    TestOffcb[idx] = new QPushButton(frame); // no caption: the colour tells
    TestOffcb[idx]->setObjectName(QString("TestOffcb%1").arg(m));
    TestOffcb[idx]->setToolTip(qs(testmode::TestOffcbTip));
    TestOffcb[idx]->setFixedWidth(TestOffcb[idx]->sizeHint().height());
    connect(TestOffcb[idx], &QPushButton::clicked, this,
            [this, m] { guarded("TestOffcb_Click", [&] { TestOffcb_Click(m); }); });
    TestDrivecb[idx] = new QPushButton(qs(testmode::TestDrivecbCaption), frame);
    TestDrivecb[idx]->setObjectName(QString("TestDrivecb%1").arg(m));
    TestDrivecb[idx]->setToolTip(qs(testmode::TestDrivecbTip));
    connect(TestDrivecb[idx], &QPushButton::clicked, this,
            [this, m] { guarded("TestDrivecb_Click", [&] { TestDrivecb_Click(m); }); });
    for (QPushButton* b : {Testcb[idx], TestDrivecb[idx]})
        b->setMinimumWidth(b->fontMetrics().horizontalAdvance(b->text()) + 2 * b->fontMetrics().averageCharWidth());
    test->addWidget(Testcb[idx]);
    test->addWidget(TestOffcb[idx]);
    test->addWidget(TestDrivecb[idx]);
    grid->addLayout(test, row, 0, 1, 2);
}

} // namespace kdx
