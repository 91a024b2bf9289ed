// The main window's side of the cyclic telemetry: decoding into the live values,
// the "Current Values" panel, the target mode, and the first-telemetry actions.
#include "core/colour.h"
#include "mainwindow/click_label.h"
#include "mainwindow/main_entry.h"
#include "link/comms_link_window.h"
#include "windows/pup_wait.h"
#include "telemetry/log_line.h"
#include "telemetry/telemetry_setup_window.h"
#include "tuning/graph_win_window.h"

#include <QTimer>

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace kdx {

namespace {

void setCaption(QLabel* l, const std::string& text)
{
    const QString t = QString::fromStdString(text);
    if (l->text() != t) l->setText(t); // a label is repainted only when its text changes
}

void paint(QWidget* w, uint32_t bgr)
{
    const Rgb c = fromBgr(bgr);
    const QColor colour(c.r, c.g, c.b);
    QPalette p = w->palette();
    if (w->autoFillBackground() && p.color(QPalette::Button) == colour) return;
    p.setColor(QPalette::Button, colour);
    p.setColor(QPalette::Window, colour);
    p.setColor(QPalette::ButtonText, Qt::black);
    w->setAutoFillBackground(true);
    w->setPalette(p);
}

} // namespace

void MainEntry::PutCyclicQvaneMsg(const MsgView& msg)
{
    SetTargetIsQVane(true);
    ShowQVaneAxis(msg[2]);
    const CyclicTelemetry decoded = decodeCyclicQvaneMsg(msg);
    applyDecoded(live, decoded);
    if (ws_.graph) ws_.graph->PutSample(0, live.motor[0].AxisRate, live.motor[0].AxisError);
    ShowLiveValues();
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
    showMotorOnePanels((live.MotorConfigBits & 8) == 0);
    ShowVersion(live.VersionMajor, live.VersionMinor);
    if (ws_.graph) {
        ws_.graph->PutSample(0, live.motor[0].AxisRate, live.motor[0].AxisError);
        ws_.graph->PutSample(1, live.motor[1].AxisRate, live.motor[1].AxisError);
    }
    ShowLiveValues();
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
        if (ws_.graph) ws_.graph->SetSecondMotorVisible(false);
    } else if (!value && TargetIsQVane) {
        if (ws_.graph) ws_.graph->SetSecondMotorVisible(true);
    }
    TargetIsQVane = value;
}

void MainEntry::showMotorOnePanels(bool visible)
{
    if (MotorConfigfr[1]->isVisibleTo(this) == visible && MotorValuesfr[1]->isVisibleTo(this) == visible) return;
    MotorConfigfr[1]->setVisible(visible);
    MotorValuesfr[1]->setVisible(visible);
    adjustSize();
}

void MainEntry::ShowLiveValues()
{
    fillLiveCaptions(live, captions_);
    for (std::size_t m = 0; m < 2; ++m) {
        const MotorCaptions& c = captions_.motor[m];
        setCaption(ElecAngletb[m], c.ElecAngletb);
        setCaption(AxisRatetb[m], c.AxisRatetb);
        setCaption(AxisErrortb[m], c.AxisErrortb);
        setCaption(AxisPtb[m], c.AxisPtb);
        setCaption(AxisItb[m], c.AxisItb);
        setCaption(AxisDtb[m], c.AxisDtb);
        setCaption(ExtGaintb[m], c.ExtGaintb);
        setCaption(AxisPowertb[m], c.AxisPowertb);
        setCaption(AxisAngletb[m], c.AxisAngletb);
        paint(TestDrivecb[m], c.TestDrivecbColour);
    }
    setCaption(Voltagetb, captions_.Voltagetb);
    setCaption(Switchtb, captions_.Switchtb);
    if ((live.SwitchBits & 1) && !ButtonFr->isVisibleTo(this)) ButtonFr->setVisible(true);
    if (shownSelectedValid_.changed(live.SelectedInputValid) && ws_.graph)
        ws_.graph->SetInputValid(live.SelectedInputValid);
    for (std::size_t i = 0; i < 3; ++i)
        if (shownValid_[i].changed(live.InputValid[i])) paint(Validitiescb[i], validityColour(live.InputValid[i]));
    DebIDtb->setCaption(QString::number(config_.debugId()));
}

std::string MainEntry::GetTelemetryFileTitles() const { return telemetryFileTitles(TargetIsQVane); }

void MainEntry::writeLogLine()
{
    if (!ws_.logging || !ws_.logging->GetLoggingDataToFile()) return;
    logLine_.clear();
    appendTelemetryLogLine(logLine_, live);
    ws_.logging->PutStringToLog(logLine_);
}

void MainEntry::SetDisplayVisible()
{
    if (ws_.logging) ws_.logging->show();
    if (ws_.wait) {
        ws_.wait->hide();
        ws_.wait->InputSwitchTimer->stop();
    }
    if (ws_.graph) ws_.graph->show();
    show();
    if (ws_.comms) ws_.comms->hide();
    DisplayVisible = true;
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
        {&AxisAngletb, "AxisAngletb", "Angle (deg)"}, {&AxisRatetb, "AxisRatetb", "Rate"},
        {&AxisErrortb, "AxisErrortb", "Error (deg)"}, {&AxisPtb, "AxisPtb", "P"},
        {&AxisItb, "AxisItb", "I"},                   {&AxisDtb, "AxisDtb", "D"},
        {&ExtGaintb, "ExtGaintb", "Ext gain"},        {&ElecAngletb, "ElecAngletb", "Elec angle"},
        {&AxisPowertb, "AxisPowertb", "Power"},
    };
    int row = 0;
    for (const Row& r : rows) {
        auto* value = new QLabel(frame);
        value->setObjectName(QString("%1%2").arg(r.name).arg(m));
        value->setFrameShape(QFrame::Panel);
        value->setFrameShadow(QFrame::Sunken);
        value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        value->setMinimumWidth(64);
        (*r.labels)[static_cast<std::size_t>(m)] = value;
        grid->addWidget(new QLabel(r.caption, frame), row, 0);
        grid->addWidget(value, row, 1);
        ++row;
    }
    auto* tuning = new QPushButton("Tuning", frame);
    tuning->setObjectName(QString("TestDrivecb%1").arg(m));
    tuning->setToolTip("Activates Q-Vane drive for tuning. Note Q-Vane must be in fixed-position mode for it to activate");
    TestDrivecb[static_cast<std::size_t>(m)] = tuning;
    grid->addWidget(tuning, row, 0, 1, 2);
}

} // namespace kdx
