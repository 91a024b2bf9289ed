// The main window's controls and menus, laid out with Qt layouts.
#include "config/param_label.h"
#include "mainwindow/click_label.h"
#include "mainwindow/main_entry.h"
#include "link/comms_link_window.h"
#include "telemetry/telemetry_setup_window.h"
#include "tuning/graph_win_window.h"
#include "platform/qt_guard.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QStatusBar>
#include <QVBoxLayout>

namespace kdx {

namespace {

struct ParamRow {
    ParamLabel label;
    const char* caption;
    const char* tip;
};

// The configuration panel of one motor, top to bottom.
constexpr ParamRow kParamRows[] = {
    {ParamLabel::PTermtb, "P term %", "Proportional term of the position loop"},
    {ParamLabel::IRatetb, "I rate", "Integral ramp rate"},
    {ParamLabel::IAngletb, "I angle (deg)", "Angle error where the integral starts ramping to zero"},
    {ParamLabel::DTermtb, "D term %", "Derivative term (based on rate)"},
    {ParamLabel::DTermLimittb, "D term limit", "Limit of the derivative term, 0..255"},
    {ParamLabel::Powertb, "Static power %", "Drive power when the position error is small"},
    {ParamLabel::PowerHitb, "Dynamic power %", "Drive power at the power-error angle and beyond"},
    {ParamLabel::PowerErrortb, "Power error (deg)", "Angle error for maximum power"},
    {ParamLabel::Gaintb, "Gain %", "Overall gain applied to P, I and D"},
    {ParamLabel::Freqtb, "PWM (kHz)", "PWM frequency of the motor drive"},
    {ParamLabel::Polestb, "Poles", "Number of poles of the motor"},
    {ParamLabel::Ratiotb, "Drive ratio", "Motor-to-load drive ratio"},
    {ParamLabel::RecoveryAngletb, "Recovery (deg)", "Recovery angle, 0 disables recovery mode"},
    {ParamLabel::FPTrimtb, "FP trim (deg)", "Power-up fixed-position motor drive trim"},
    {ParamLabel::Axistb, "Q-Vane axis", "The Q-Vane axis this motor answers as"},
};

QPushButton* makeButton(const QString& text, const char* name, QWidget* parent)
{
    auto* b = new QPushButton(text, parent);
    b->setObjectName(name);
    return b;
}

} // namespace

void MainEntry::buildControls()
{
    auto* central = new QWidget(this);
    auto* top = new QVBoxLayout(central);

    // Connection: target kind and Q-Vane axis.
    auto* connection = new QHBoxLayout;
    auto* targetBox = new QGroupBox("Target", central);
    auto* targetLayout = new QHBoxLayout(targetBox);
    const char* targetCaptions[2] = {"KDX", "QVane"};
    const char* targetTips[2] = {"Connect directly to a KDX module",
                                 "Connect to a KDX module through the Q-Vane module"};
    for (int i = 0; i < 2; ++i) {
        auto* b = new QRadioButton(targetCaptions[i], targetBox);
        b->setObjectName(QString("TgtSelcb%1").arg(i));
        b->setToolTip(targetTips[i]);
        connect(b, &QRadioButton::clicked, this, [this, i] { guarded([&] { TgtSelcb_Click(i); }); });
        targetLayout->addWidget(b);
        TgtSelcb[static_cast<std::size_t>(i)] = b;
    }
    TgtSelcb[0]->setChecked(true);
    connection->addWidget(targetBox);

    QVaneConnectFr = new QGroupBox("Q-Vane Connect", central);
    QVaneConnectFr->setObjectName("QVaneConnectFr");
    auto* axisLayout = new QHBoxLayout(QVaneConnectFr);
    const char* axisCaptions[3] = {"Tilt", "Roll", "Pan"};
    for (int i = 0; i < 3; ++i) {
        auto* b = makeButton(axisCaptions[i], "", QVaneConnectFr);
        b->setObjectName(QString("KDXAxisSelcb%1").arg(i));
        b->setToolTip(QString("Connects to the %1 KDX axis through the Q-Vane").arg(axisCaptions[i]));
        connect(b, &QPushButton::clicked, this, [this, i] { guarded([&] { KDXAxisSelcb_Click(i); }); });
        axisLayout->addWidget(b);
        KDXAxisSelcb[static_cast<std::size_t>(i)] = b;
    }
    QVaneConnectFr->setVisible(false);
    connection->addWidget(QVaneConnectFr);
    connection->addStretch(1);

    Versiontb = new QLabel(central);
    Versiontb->setObjectName("Versiontb");
    Versiontb->setToolTip("Firmware version of the module");
    connection->addWidget(new QLabel("Firmware:", central));
    connection->addWidget(Versiontb);
    top->addLayout(connection);

    // Configuration of each motor.
    auto* motors = new QHBoxLayout;
    for (int m = 0; m < 2; ++m) {
        auto* frame = new QGroupBox(QString("Motor %1 Configuration").arg(m + 1), central);
        frame->setObjectName(QString("MotorConfigfr%1").arg(m));
        auto* grid = new QGridLayout(frame);
        int row = 0;
        for (const ParamRow& r : kParamRows) {
            auto* caption = new QLabel(r.caption, frame);
            auto* value = new ClickLabel(frame);
            value->setObjectName(QString("%1%2").arg(QString::fromUtf8(labelName(r.label).data(),
                                                                       static_cast<int>(labelName(r.label).size())))
                                     .arg(m));
            value->setToolTip(QString(r.tip) + " (click to change)");
            const ParamLabel l = r.label;
            connect(value, &ClickLabel::clicked, this, [this, l, m] { guarded([&] { ParamLabel_Click(l, m); }); });
            paramLabels[l][static_cast<std::size_t>(m)] = value;
            caption->setBuddy(value);
            grid->addWidget(caption, row, 0);
            grid->addWidget(value, row, 1);
            ++row;
        }
        auto* reverse = new QCheckBox("Reverse", frame);
        reverse->setObjectName(QString("Reversecb%1").arg(m));
        reverse->setToolTip("Reverses the drive for the motor");
        connect(reverse, &QCheckBox::clicked, this, [this, m] { guarded([&] { Reversecb_Click(m); }); });
        Reversecb[static_cast<std::size_t>(m)] = reverse;
        grid->addWidget(reverse, row, 0, 1, 2);
        MotorConfigfr[static_cast<std::size_t>(m)] = frame;
        motors->addWidget(frame);

        auto* values = new QGroupBox(QString("Motor %1 Current Values").arg(m + 1), central);
        values->setObjectName(QString("MotorValuesfr%1").arg(m));
        new QVBoxLayout(values);
        buildLiveValues(m, values);
        MotorValuesfr[static_cast<std::size_t>(m)] = values;
        motors->addWidget(values);
    }
    top->addLayout(motors);

    // Transfer buttons and status.
    auto* transfer = new QHBoxLayout;
    ReadConfigcb = makeButton("&Read", "ReadConfigcb", central);
    ReadConfigcb->setToolTip("Read the configuration from the module");
    WriteConfigcb = makeButton("&Write", "WriteConfigcb", central);
    WriteConfigcb->setToolTip("Write the configuration to the module");
    LoadConfigcb = makeButton("Load", "LoadConfigcb", central);
    LoadConfigcb->setToolTip("Load the configuration from a backup file");
    SaveConfigcb = makeButton("Save", "SaveConfigcb", central);
    SaveConfigcb->setToolTip("Save the configuration to a backup file");
    connect(ReadConfigcb, &QPushButton::clicked, this, [this] { guarded([&] { ReadConfigcb_Click(); }); });
    connect(WriteConfigcb, &QPushButton::clicked, this, [this] { guarded([&] { WriteConfigcb_Click(); }); });
    connect(LoadConfigcb, &QPushButton::clicked, this, [this] { guarded([&] { LoadConfigcb_Click(); }); });
    connect(SaveConfigcb, &QPushButton::clicked, this, [this] { guarded([&] { SaveConfigcb_Click(); }); });
    MemReqtb = new QLabel(central);
    MemReqtb->setObjectName("MemReqtb");
    MemReqtb->setMinimumWidth(110);
    for (QWidget* w : {static_cast<QWidget*>(ReadConfigcb), static_cast<QWidget*>(WriteConfigcb),
                       static_cast<QWidget*>(LoadConfigcb), static_cast<QWidget*>(SaveConfigcb),
                       static_cast<QWidget*>(MemReqtb)})
        transfer->addWidget(w);
    transfer->addStretch(1);

    ButtonFr = new QGroupBox("Switch", central);
    ButtonFr->setObjectName("ButtonFr");
    auto* switchLayout = new QHBoxLayout(ButtonFr);
    Switchtb = new QLabel(ButtonFr);
    Switchtb->setObjectName("Switchtb");
    switchLayout->addWidget(Switchtb);
    ButtonFr->setVisible(false);
    transfer->addWidget(ButtonFr);
    const char* inputs[3] = {"PPM", "Spektrum", "SBUS"};
    for (int i = 0; i < 3; ++i) {
        auto* b = new QPushButton(inputs[i], central);
        b->setObjectName(QString("Validitiescb%1").arg(i));
        b->setToolTip(QString("Validity of the %1 command input, as the Q-Vane reports it").arg(inputs[i]));
        b->setFocusPolicy(Qt::NoFocus);
        Validitiescb[static_cast<std::size_t>(i)] = b;
        transfer->addWidget(b);
    }

    Voltagetb = new ClickLabel(central);
    Voltagetb->setObjectName("Voltagetb");
    Voltagetb->setToolTip("Current supply voltage for the KDX motor driver");
    Voltagetb->setCursor(Qt::ArrowCursor);
    connect(Voltagetb, &ClickLabel::clicked, this, [this] { guarded([&] { Voltagetb_Click(); }); });
    transfer->addWidget(new QLabel("Supply (V):", central));
    transfer->addWidget(Voltagetb);

    DebugIDFr = new QGroupBox("Debug", central);
    DebugIDFr->setObjectName("DebugIDFr");
    auto* debugLayout = new QHBoxLayout(DebugIDFr);
    DebIDtb = new ClickLabel(DebugIDFr);
    DebIDtb->setObjectName("DebIDtb");
    DebIDtb->setToolTip("The module's debug identifier (click to change)");
    connect(DebIDtb, &ClickLabel::clicked, this, [this] { guarded([&] { ParamLabel_Click(ParamLabel::DebIDtb, 0); }); });
    debugLayout->addWidget(new QLabel("Debug ID", DebugIDFr));
    debugLayout->addWidget(DebIDtb);
    transfer->addWidget(DebugIDFr);
    top->addLayout(transfer);

    setCentralWidget(central);

    CommsQualitylb = new QLabel(this);
    CommsQualitylb->setObjectName("CommsQualitylb");
    CommsQualitylb->setToolTip("Comms quality: messages received against the 100 per second expected");
    statusBar()->addPermanentWidget(CommsQualitylb);
}

void MainEntry::buildMenus()
{
    QMenu* file = menuBar()->addMenu("&File");
    file->setObjectName("mnuFile");
    mnuLoad = file->addAction("&Load...", this, [this] { guarded([&] { mnuLoad_Click(); }); });
    mnuLoad->setObjectName("mnuLoad");
    mnuLoad->setShortcut(QKeySequence::Open);
    mnuSave = file->addAction("&Save...", this, [this] { guarded([&] { mnuSave_Click(); }); });
    mnuSave->setObjectName("mnuSave");
    mnuSave->setShortcut(QKeySequence::Save);
    file->addSeparator();
    QAction* read = file->addAction("&Read from module", this, [this] { guarded([&] { ReadConfigcb_Click(); }); });
    read->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_R));
    QAction* write = file->addAction("&Write to module", this, [this] { guarded([&] { WriteConfigcb_Click(); }); });
    write->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_W));
    file->addSeparator();
    mnuExit = file->addAction("E&xit", this, [this] { close(); });
    mnuExit->setObjectName("mnuExit");
    mnuExit->setShortcut(QKeySequence::Quit);

    QMenu* window = menuBar()->addMenu("&Window");
    window->setObjectName("mnuWindow");
    QAction* graph = window->addAction("&Tuning Display", this, [this] {
        if (ws_.graph) {
            ws_.graph->show();
            ws_.graph->raise();
        }
    });
    graph->setObjectName("mnuGraph");
    graph->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_T));
    QAction* comms = window->addAction("&Comms Link", this, [this] {
        if (ws_.comms) {
            ws_.comms->show();
            ws_.comms->raise();
        }
    });
    comms->setObjectName("mnuCommsLink");
    QAction* logging = window->addAction("&Logging", this, [this] {
        if (ws_.logging) {
            ws_.logging->show();
            ws_.logging->raise();
        }
    });
    logging->setObjectName("mnuLogging");
}

} // namespace kdx
