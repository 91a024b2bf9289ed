// The main window's controls and menus, laid out with Qt layouts.
#include "config/param_label.h"
#include "widgets/click_label.h"
#include "mainwindow/main_entry.h"
#include "platform/qt_guard.h"
#include "widgets/text.h"

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

// A button as narrow as its caption allows, for rows of short captions.
void compact(QPushButton* b)
{
    b->setMinimumWidth(b->fontMetrics().horizontalAdvance(b->text()) + 2 * b->fontMetrics().averageCharWidth());
}

QPushButton* makeButton(const QString& text, const char* name, QWidget* parent)
{
    auto* b = new QPushButton(text, parent);
    b->setObjectName(name);
    return b;
}

} // namespace

// Two motor columns (configuration above current values) beside one column of the
// controls both motors share, so hiding motor 1's column leaves a window one motor wide.
void MainEntry::buildControls()
{
    auto* central = new QWidget(this);
    auto* top = new QHBoxLayout(central);
    for (int m = 0; m < 2; ++m) top->addLayout(buildMotorColumn(m, central));

    auto* shared = new QVBoxLayout;
    top->addLayout(shared);
    buildTargetFrames(shared, central);
    shared->addWidget(buildModuleFrame(central));
    shared->addWidget(buildTransferFrame(central));
    shared->addWidget(buildTestFrame(central));
    shared->addWidget(buildDebugFrame(central));
    shared->addStretch(1);

    setCentralWidget(central);

    CommsQualitylb = new QLabel(this);
    CommsQualitylb->setObjectName("CommsQualitylb");
    CommsQualitylb->setToolTip("Comms quality: messages received against the 100 per second expected");
    statusBar()->addPermanentWidget(CommsQualitylb);
}

// A motor's column: its configuration (one clickable value per parameter, and Reverse)
// above its current values.
QVBoxLayout* MainEntry::buildMotorColumn(int m, QWidget* central)
{
    const auto idx = static_cast<std::size_t>(m);
    auto* column = new QVBoxLayout;
    auto* frame = new QGroupBox(QString("Motor %1 Configuration").arg(m + 1), central);
    frame->setObjectName(QString("MotorConfigfr%1").arg(m));
    auto* grid = new QGridLayout(frame);
    int row = 0;
    for (const ParamRow& r : kParamRows) {
        auto* caption = new QLabel(r.caption, frame);
        auto* value = new ClickLabel(frame);
        value->setObjectName(QString("%1%2").arg(qs(labelName(r.label))).arg(m));
        value->setToolTip(QString(r.tip) + " (click to change)");
        const ParamLabel l = r.label;
        connect(value, &ClickLabel::clicked, this,
                [this, l, m] { guarded("ParamLabel_Click", [&] { ParamLabel_Click(l, m); }); });
        paramLabels[l][idx] = value;
        caption->setBuddy(value);
        grid->addWidget(caption, row, 0);
        grid->addWidget(value, row, 1);
        ++row;
    }
    auto* reverse = new QCheckBox(qs(testmode::ReversecbCaption), frame);
    reverse->setObjectName(QString("Reversecb%1").arg(m));
    reverse->setToolTip(qs(testmode::ReversecbTip));
    connect(reverse, &QCheckBox::clicked, this, [this, m] { guarded("Reversecb_Click", [&] { Reversecb_Click(m); }); });
    Reversecb[idx] = reverse;
    grid->addWidget(reverse, row, 0, 1, 2);
    MotorConfigfr[idx] = frame;
    column->addWidget(frame);

    auto* values = new QGroupBox(QString("Motor %1 Current Values").arg(m + 1), central);
    values->setObjectName(QString("MotorValuesfr%1").arg(m));
    new QVBoxLayout(values);
    buildLiveValues(m, values);
    MotorValuesfr[idx] = values;
    column->addWidget(values);
    column->addStretch(1);
    return column;
}

// The target kind (direct or through a Q-Vane) and the Q-Vane's axis buttons.
void MainEntry::buildTargetFrames(QVBoxLayout* shared, QWidget* central)
{
    auto* targetBox = new QGroupBox("Target", central);
    auto* targetLayout = new QHBoxLayout(targetBox);
    const char* targetCaptions[2] = {"KDX", "QVane"};
    const char* targetTips[2] = {"Connect directly to a KDX module",
                                 "Connect to a KDX module through the Q-Vane module"};
    for (int i = 0; i < 2; ++i) {
        auto* b = new QRadioButton(targetCaptions[i], targetBox);
        b->setObjectName(QString("TgtSelcb%1").arg(i));
        b->setToolTip(targetTips[i]);
        connect(b, &QRadioButton::clicked, this, [this, i] { guarded("TgtSelcb_Click", [&] { TgtSelcb_Click(i); }); });
        targetLayout->addWidget(b);
        TgtSelcb[static_cast<std::size_t>(i)] = b;
    }
    TgtSelcb[0]->setChecked(true);
    shared->addWidget(targetBox);

    QVaneConnectFr = new QGroupBox("Q-Vane Connect", central);
    QVaneConnectFr->setObjectName("QVaneConnectFr");
    auto* axisLayout = new QHBoxLayout(QVaneConnectFr);
    const char* axisCaptions[3] = {"Tilt", "Roll", "Pan"};
    for (int i = 0; i < 3; ++i) {
        auto* b = makeButton(axisCaptions[i], "", QVaneConnectFr);
        b->setObjectName(QString("KDXAxisSelcb%1").arg(i));
        b->setToolTip(QString("Connects to the %1 KDX axis through the Q-Vane").arg(axisCaptions[i]));
        compact(b);
        connect(b, &QPushButton::clicked, this,
                [this, i] { guarded("KDXAxisSelcb_Click", [&] { KDXAxisSelcb_Click(i); }); });
        axisLayout->addWidget(b);
        KDXAxisSelcb[static_cast<std::size_t>(i)] = b;
    }
    QVaneConnectFr->setVisible(false);
    shared->addWidget(QVaneConnectFr);
}

// The module: firmware, supply, switch and command inputs.
QGroupBox* MainEntry::buildModuleFrame(QWidget* central)
{
    auto* moduleBox = new QGroupBox("Module", central);
    auto* moduleGrid = new QGridLayout(moduleBox);
    Versiontb = new QLabel(moduleBox);
    Versiontb->setObjectName("Versiontb");
    Versiontb->setToolTip("Firmware version of the module");
    moduleGrid->addWidget(new QLabel("Firmware", moduleBox), 0, 0);
    moduleGrid->addWidget(Versiontb, 0, 1);
    Voltagetb = new ClickLabel(moduleBox);
    Voltagetb->setObjectName("Voltagetb");
    Voltagetb->setToolTip("Current supply voltage for the KDX motor driver");
    Voltagetb->setCursor(Qt::ArrowCursor);
    connect(Voltagetb, &ClickLabel::clicked, this, [this] { guarded("Voltagetb_Click", [&] { Voltagetb_Click(); }); });
    moduleGrid->addWidget(new QLabel("Supply (V)", moduleBox), 1, 0);
    moduleGrid->addWidget(Voltagetb, 1, 1);
    auto* inputs = new QHBoxLayout;
    const char* inputNames[3] = {"PPM", "Spektrum", "SBUS"};
    for (int i = 0; i < 3; ++i) {
        auto* b = new QPushButton(inputNames[i], moduleBox);
        b->setObjectName(QString("Validitiescb%1").arg(i));
        b->setToolTip(QString("Validity of the %1 command input, as the Q-Vane reports it").arg(inputNames[i]));
        b->setFocusPolicy(Qt::NoFocus);
        compact(b);
        Validitiescb[static_cast<std::size_t>(i)] = b;
        inputs->addWidget(b);
    }
    moduleGrid->addLayout(inputs, 2, 0, 1, 2);
    ButtonFr = new QGroupBox("Switch", moduleBox);
    ButtonFr->setObjectName("ButtonFr");
    auto* switchLayout = new QHBoxLayout(ButtonFr);
    Switchtb = new QLabel(ButtonFr);
    Switchtb->setObjectName("Switchtb");
    switchLayout->addWidget(Switchtb);
    ButtonFr->setVisible(false);
    moduleGrid->addWidget(ButtonFr, 3, 0, 1, 2);

    return moduleBox;
}

// Read, Write, Load and Save, and the transfer's status.
QGroupBox* MainEntry::buildTransferFrame(QWidget* central)
{
    auto* transferBox = new QGroupBox("Configuration", central);
    auto* transfer = new QGridLayout(transferBox);
    ReadConfigcb = makeButton("&Read", "ReadConfigcb", transferBox);
    ReadConfigcb->setToolTip("Read the configuration from the module");
    WriteConfigcb = makeButton("&Write", "WriteConfigcb", transferBox);
    WriteConfigcb->setToolTip("Write the configuration to the module");
    LoadConfigcb = makeButton("Load", "LoadConfigcb", transferBox);
    LoadConfigcb->setToolTip("Load the configuration from a backup file");
    SaveConfigcb = makeButton("Save", "SaveConfigcb", transferBox);
    SaveConfigcb->setToolTip("Save the configuration to a backup file");
    connect(ReadConfigcb, &QPushButton::clicked, this,
            [this] { guarded("ReadConfigcb_Click", [&] { ReadConfigcb_Click(); }); });
    connect(WriteConfigcb, &QPushButton::clicked, this,
            [this] { guarded("WriteConfigcb_Click", [&] { WriteConfigcb_Click(); }); });
    connect(LoadConfigcb, &QPushButton::clicked, this,
            [this] { guarded("LoadConfigcb_Click", [&] { LoadConfigcb_Click(); }); });
    connect(SaveConfigcb, &QPushButton::clicked, this,
            [this] { guarded("SaveConfigcb_Click", [&] { SaveConfigcb_Click(); }); });
    transfer->addWidget(ReadConfigcb, 0, 0);
    transfer->addWidget(WriteConfigcb, 0, 1);
    transfer->addWidget(LoadConfigcb, 1, 0);
    transfer->addWidget(SaveConfigcb, 1, 1);
    MemReqtb = new QLabel(transferBox);
    MemReqtb->setObjectName("MemReqtb");
    UnrequestedReplylb = new QLabel("Replaced by a reply nobody asked for", transferBox);
    UnrequestedReplylb->setObjectName("UnrequestedReplylb");
    UnrequestedReplylb->setToolTip("The configuration shown came in a memory message that no read or write asked "
                                   "for; noise on the line can form one. Read the module again before writing.");
    UnrequestedReplylb->setWordWrap(true);
    QPalette warning = UnrequestedReplylb->palette();
    // Dark red on a light palette, light red on a dark one: readable on either.
    const bool dark = warning.color(QPalette::Window).lightness() < 128;
    warning.setColor(QPalette::WindowText, dark ? QColor(0xFF, 0x70, 0x70) : QColor(0xC0, 0, 0));
    UnrequestedReplylb->setPalette(warning);
    QFont bold = UnrequestedReplylb->font();
    bold.setBold(true);
    UnrequestedReplylb->setFont(bold);
    UnrequestedReplylb->setVisible(false);
    auto* status = new QHBoxLayout;
    status->addWidget(MemReqtb);
    status->addWidget(UnrequestedReplylb, 1);
    transfer->addLayout(status, 2, 0, 1, 2);

    return transferBox;
}

QGroupBox* MainEntry::buildDebugFrame(QWidget* central)
{
    DebugIDFr = new QGroupBox("Debug", central);
    DebugIDFr->setObjectName("DebugIDFr");
    auto* debugLayout = new QHBoxLayout(DebugIDFr);
    DebIDtb = new ClickLabel(DebugIDFr);
    DebIDtb->setObjectName("DebIDtb");
    DebIDtb->setToolTip("The module's debug identifier (click to change)");
    connect(DebIDtb, &ClickLabel::clicked, this,
            [this] { guarded("ParamLabel_Click", [&] { ParamLabel_Click(ParamLabel::DebIDtb, 0); }); });
    debugLayout->addWidget(new QLabel("Debug ID", DebugIDFr));
    debugLayout->addWidget(DebIDtb);
    return DebugIDFr;
}

// The shared test-mode values and the bootloader restart. The per-motor test buttons
// sit in each motor's Current Values panel.
QGroupBox* MainEntry::buildTestFrame(QWidget* parent)
{
    auto* frame = new QGroupBox("Motor Test", parent);
    frame->setObjectName("TestFr");
    auto* layout = new QGridLayout(frame);
    TestPtb = new ClickLabel(frame);
    TestPtb->setObjectName("TestPtb");
    TestPtb->setToolTip(qs(testmode::TestPtbTip));
    connect(TestPtb, &ClickLabel::clicked, this, [this] { guarded("TestPtb_Click", [&] { TestPtb_Click(); }); });
    TestRatetb = new ClickLabel(frame);
    TestRatetb->setObjectName("TestRatetb");
    TestRatetb->setToolTip(qs(testmode::TestRatetbTip));
    connect(TestRatetb, &ClickLabel::clicked, this,
            [this] { guarded("TestRatetb_Click", [&] { TestRatetb_Click(); }); });
    layout->addWidget(new QLabel("Power", frame), 0, 0);
    layout->addWidget(TestPtb, 0, 1);
    layout->addWidget(new QLabel("Rate", frame), 1, 0);
    layout->addWidget(TestRatetb, 1, 1);
    RestartIntoBLcb = makeButton("Restart Into Bootloader", "RestartIntoBLcb", frame);
    RestartIntoBLcb->setToolTip("Restarts the module into its bootloader, for a firmware update");
    connect(RestartIntoBLcb, &QPushButton::clicked, this,
            [this] { guarded("RestartIntoBLcb_Click", [&] { RestartIntoBLcb_Click(); }); });
    layout->addWidget(RestartIntoBLcb, 2, 0, 1, 2);
    return frame;
}

void MainEntry::buildMenus()
{
    QMenu* file = menuBar()->addMenu("&File");
    file->setObjectName("mnuFile");
    mnuLoad = file->addAction("&Load...", this, [this] { guarded("mnuLoad_Click", [&] { mnuLoad_Click(); }); });
    mnuLoad->setObjectName("mnuLoad");
    mnuLoad->setShortcut(QKeySequence::Open);
    mnuSave = file->addAction("&Save...", this, [this] { guarded("mnuSave_Click", [&] { mnuSave_Click(); }); });
    mnuSave->setObjectName("mnuSave");
    mnuSave->setShortcut(QKeySequence::Save);
    file->addSeparator();
    QAction* read = file->addAction("&Read from module", this,
                                    [this] { guarded("ReadConfigcb_Click", [&] { ReadConfigcb_Click(); }); });
    read->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_R));
    QAction* write = file->addAction("&Write to module", this,
                                     [this] { guarded("WriteConfigcb_Click", [&] { WriteConfigcb_Click(); }); });
    write->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_W));
    file->addSeparator();
    mnuExit = file->addAction("E&xit", this, [this] { close(); });
    mnuExit->setObjectName("mnuExit");
    mnuExit->setShortcut(QKeySequence::Quit);

    QMenu* window = menuBar()->addMenu("&Window");
    window->setObjectName("mnuWindow");
    QAction* graph = window->addAction("&Tuning Display", this, [this] {
        peers_.windows.showWindow(ProgramWindow::Tuning);
        peers_.windows.raiseWindow(ProgramWindow::Tuning);
    });
    graph->setObjectName("mnuGraph");
    graph->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_T));
    QAction* comms = window->addAction("&Comms Link", this, [this] {
        peers_.windows.showWindow(ProgramWindow::CommsLink);
        peers_.windows.raiseWindow(ProgramWindow::CommsLink);
    });
    comms->setObjectName("mnuCommsLink");
    QAction* logging = window->addAction("&Logging", this, [this] {
        peers_.windows.showWindow(ProgramWindow::DataLogging);
        peers_.windows.raiseWindow(ProgramWindow::DataLogging);
    });
    logging->setObjectName("mnuLogging");
    mnuDebug = window->addAction("&Debug Display", this, [this] {
        peers_.windows.showWindow(ProgramWindow::DebugDisplay);
        peers_.windows.raiseWindow(ProgramWindow::DebugDisplay);
    });
    mnuDebug->setObjectName("mnuDebug");

    QMenu* help = menuBar()->addMenu("&Help");
    help->setObjectName("mnuHelp");
    mnuAbout = help->addAction("&About", this, [this] { guarded("mnuAbout_Click", [&] { mnuAbout_Click(); }); });
    mnuAbout->setObjectName("mnuAbout");
}

} // namespace kdx
