#include "mainwindow/main_entry.h"

#include "config/config_file.h"
#include "config/entry_commands.h"
#include "config/memory_transfer.h"
#include "config/startup.h"
#include "mainwindow/change_markers.h"
#include "core/colour.h"
#include "core/host_numeric.h"
#include "link/message_ids.h"
#include "widgets/click_label.h"
#include "platform/dialogs.h"
#include "platform/key_state.h"
#include "platform/qt_guard.h"
#include "tuning/gain_message.h"
#include "tuning/tuning_display.h"
#include "widgets/compact_layout.h"
#include "widgets/face_colour.h"
#include "widgets/refresh_pacer.h"
#include "widgets/text.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QTimer>

namespace kdx {

namespace {

constexpr const char* kCaption = "KDX Tool";

// The path's file name: what follows its last folder separator.
std::string afterLastSeparator(const std::string& path)
{
#ifdef _WIN32
    const auto sep = path.find_last_of("\\/");
#else
    const auto sep = path.find_last_of('/');
#endif
    return sep == std::string::npos ? path : path.substr(sep + 1);
}

} // namespace

MainEntry::MainEntry(const Peers& peers, QWidget* parent) : QMainWindow(parent), peers_(peers)
{
    setObjectName("MainEntry");
    setWindowTitle(kCaption);
    buildControls();
    buildMenus();
    compactLayouts(centralWidget(), 2, 6); // fits, menu and status bar included, a 768-pixel-high screen
    buildChecks();
    paintFace(WriteConfigcb, colours::LightGrey); // nothing to write before a read, load or edit
    setFormWidthTwips(TwoMotorWidthTwips);

    CommsQualityTmr = new QTimer(this);
    CommsQualityTmr->setObjectName("CommsQualityTmr");
    CommsQualityTmr->setInterval(500);
    connect(CommsQualityTmr, &QTimer::timeout, this,
            [this] { guarded("CommsQualityTmr_Timer", [&] { CommsQualityTmr_Timer(); }); });

    MemReqTimer = new QTimer(this);
    MemReqTimer->setObjectName("MemReqTimer");
    MemReqTimer->setInterval(memreq::TimeoutMs);
    MemReqTimer->setSingleShot(true);
    connect(MemReqTimer, &QTimer::timeout, this,
            [this] { guarded("MemReqTimer_Timer", [&] { MemReqTimer_Timer(); }); });

    buildLiveDisplayTimer();

    TestTmr = new QTimer(this);
    TestTmr->setObjectName("TestTmr");
    TestTmr->setInterval(testmode::TimerMs);
    connect(TestTmr, &QTimer::timeout, this, [this] { guarded("TestTmr_Timer", [&] { TestTmr_Timer(); }); });

    config_.setRefreshHandler([this] { RefreshParamDisplay(); });
    config_.setDataModifiedHandler([this](bool flag) { SetDataModified(flag); });
}

MainEntry::~MainEntry() = default;

void MainEntry::Form_Load()
{
    applyStartupDefaults(config_);
    testMode_.applyTestPower(testmode::DefaultPower);
    testMode_.applyTestRate(testmode::DefaultRate);
    showTestValues();
    UpdateTestButtons();
    DebugIDFr->setVisible(false);
    ShowQVaneAxis(3);
    showWaitWindow();
    CommsQualityTmr->start();
    followTestTmr(); // enabled from start: its first tick sends one idle command and stops
}

// The working windows stay hidden until a module is heard; meanwhile the wait window
// stands centred over the main window, which takes its place in the middle of the
// screen now so that it appears there later.
void MainEntry::showWaitWindow()
{
    peers_.windows.hideWindow(ProgramWindow::Tuning);
    peers_.windows.hideWindow(ProgramWindow::DataLogging);
    hide();
    if (const QScreen* s = screen()) move(s->availableGeometry().center() - rect().center());
    peers_.windows.showWindow(ProgramWindow::Wait);
}

// ---- link ---------------------------------------------------------------------------

void MainEntry::SendMessage() { peers_.link.SendMessage(OutMsg); }

void MainEntry::SendPID(float P, float I, float IA, float D, float G, float V1, float V2, int MotorIndex)
{
    buildGainMsg(OutMsg, P, I, IA, D, G, V1, V2, MotorIndex, GainMsgRoute{TargetIsQVane, QVaneAxis});
    SendMessage();
}

// The restart into the bootloader has one form whatever the target: three elements,
// the checksum 3 + 254 left unreduced (the link sends its low byte, 1).
void MainEntry::RestartIntoBootloader()
{
    OutMsg[0] = 3;
    OutMsg[1] = msg::Bootloader;
    OutMsg[2] = 3 + msg::Bootloader;
    SendMessage();
}

void MainEntry::RestartIntoBLcb_Click() { RestartIntoBootloader(); }

void MainEntry::PutMessageReceived(bool good) { messageCount.PutMessageReceived(good); }

void MainEntry::CommsQualityTmr_Timer()
{
    CommsQuality = messageCount.tick();
    showText(CommsQualitylb, Format(CommsQuality, "0%"));
}

// ---- memory transfer ----------------------------------------------------------------

void MainEntry::RequestMemoryRead(bool /*flag: kept in the interface, unused*/)
{
    buildReadRequest(OutMsg, TargetIsQVane, QVaneAxis);
    SendMessage();
    MemReqTimer->stop();
    MemReqtb->setText(qs(memreq::Reading));
    MemReqTimer->start();
    memoryRequestPending_ = true;
    UnrequestedReplylb->setVisible(false);
}

void MainEntry::RequestMemoryWrite()
{
    buildWriteMessage(OutMsg, config_.image(), TargetIsQVane, QVaneAxis);
    SendMessage();
    MemReqtb->setText(qs(memreq::Writing));
    MemReqTimer->start();
    memoryRequestPending_ = true;
    UnrequestedReplylb->setVisible(false);
}

void MainEntry::ReadConfigcb_Click() { RequestMemoryRead(true); }

void MainEntry::WriteConfigcb_Click()
{
    config_.ParamsToImage();
    RequestMemoryWrite();
}

void MainEntry::MemReqTimer_Timer()
{
    MemReqtb->setText(qs(memreq::TimedOut));
    MemReqTimer->stop();
    memoryRequestPending_ = false; // an answer after this came too late to be the one asked for
}

void MainEntry::PutMemoryMsg(const MsgView& msg)
{
    kdx::PutMemoryMsg(config_.image(), msg);
    MemReqtb->setText(qs(memreq::Ok));
    MemReqTimer->stop();
    config_.acceptNewImage();
    noteMemoryReply();
}

void MainEntry::PutAxisMemoryMsg(const MsgView& msg)
{
    const FirmwareVersion v = kdx::PutAxisMemoryMsg(config_.image(), msg);
    ShowVersion(v.low, v.high);
    MemReqtb->setText(qs(memreq::Ok));
    MemReqTimer->stop();
    config_.acceptNewImage();
    noteMemoryReply();
}

// An unrequested reply is taken like a requested one, as the module's protocol has it;
// only the notice tells the two apart, before anyone writes what it brought.
void MainEntry::noteMemoryReply()
{
    UnrequestedReplylb->setVisible(!memoryRequestPending_);
    memoryRequestPending_ = false;
    changeMarkers_->takeReport(config_);
}

void MainEntry::SetDataModified(bool flag)
{
    paintFace(WriteConfigcb, flag ? colours::Green : colours::LightGrey);
    if (flag) MemReqtb->setText(qs(memreq::WriteToApply));
}

bool MainEntry::ConfirmReadOverChanges()
{
    return peers_.dialogs.MsgBox(std::string(kConfirmReadPrompt), box::YesNoWarning, std::string(kConfirmReadTitle)) ==
           Answer::Yes;
}

// ---- files --------------------------------------------------------------------------

void MainEntry::LoadConfigcb_Click()
{
    if (!confirmLoad()) return;
    FileDialogRequest r;
    r.title = "Load Configuration";
    r.filter = std::string(TargetIsQVane ? configfile::LoadFilterQVane : configfile::LoadFilterDirect);
    r.defaultExt = std::string(TargetIsQVane ? configfile::ExtQVane : configfile::ExtDirect);
    r.fileName = std::string(configfile::DefaultFileName);
    const auto path = peers_.dialogs.OpenFile(r);
    if (!path) return; // cancelled
    loadConfigFrom(*path);
}

void MainEntry::StartLoadOnInit(const std::string& path) { loadConfigFrom(path); }

bool MainEntry::loadConfigFrom(const std::string& path)
{
    const ConfigLoad load = loadConfigFile(path, TargetIsQVane);
    bool second = false;
    if (load.status == ConfigLoadStatus::Failed) {
        peers_.dialogs.MsgBox(load.box.prompt, load.box.style, load.box.title);
        return false;
    }
    if (load.status == ConfigLoadStatus::AskMotor)
        second = peers_.dialogs.MsgBox(load.box.prompt, load.box.style, load.box.title) != Answer::Yes;
    applyConfigLoad(load, config_.image(), second);
    SetShortFileName(path);
    config_.acceptNewImage();
    MemReqtb->setText("Loaded");
    MemReqtb->setToolTip(QString::fromStdString("Loaded from " + path + "; Write to send it to the module"));
    return true;
}

void MainEntry::SaveConfigcb_Click()
{
    FileDialogRequest r;
    r.title = "Save Configuration";
    r.filter = std::string(TargetIsQVane ? configfile::SaveFilterQVane : configfile::SaveFilterDirect);
    r.defaultExt = std::string(TargetIsQVane ? configfile::ExtQVane : configfile::ExtDirect);
    r.fileName = std::string(configfile::DefaultFileName);
    const auto path = peers_.dialogs.SaveFile(r);
    if (!path) return;
    // The file receives the values shown, unwritten changes included, with a fresh checksum.
    config_.ParamsToImage();
    if (const auto error = saveConfigFile(*path, config_.image(), !TargetIsQVane, peers_.saver)) {
        peers_.dialogs.MsgBox(error->prompt, error->style, error->title);
        return;
    }
    SetShortFileName(*path);
    MemReqtb->setText("Saved");
    MemReqtb->setToolTip(QString::fromStdString("Saved to " + *path));
}

void MainEntry::SetShortFileName(const std::string& path)
{
    shortFileName = afterLastSeparator(path);
    setWindowTitle(QString::fromStdString(std::string(kCaption) + " - " + shortFileName));
}

// ---- parameter entry ----------------------------------------------------------------

void MainEntry::RefreshParamDisplay()
{
    for (int m = 0; m < 2; ++m)
        for (ParamLabel l : kRefreshOrder) label(l, m)->setCaption(QString::fromStdString(config_.caption(l, m)));
    for (int m = 0; m < 2; ++m) {
        QCheckBox* box = Reversecb[static_cast<std::size_t>(m)];
        if (box->isChecked() != config_.reverse(m)) {
            const QSignalBlocker block(box);
            box->setChecked(config_.reverse(m));
        }
    }
    DebIDtb->setCaption(QString::number(config_.debugId()));
    if (changeMarkers_) changeMarkers_->show(config_);
}

void MainEntry::ParamLabel_Click(ParamLabel l, int index)
{
    const EntryCommand* command = findEntryCommand(l);
    if (!command) return;
    if (command->target == EntryTarget::QVaneAxis && TargetIsQVane &&
        peers_.dialogs.MsgBox(std::string(kAxisWarningText), box::YesNoWarning, std::string(kAxisWarningTitle)) !=
            Answer::Yes)
        return;
    const float current = entryCurrentValue(config_, *command, index);
    const std::string answer =
        peers_.dialogs.InputBox(std::string(command->prompt), std::string(kEntryTitle), askValueDefault(current));
    const float value = AskValueResult(current, answer);
    applyEntry(config_, *command, index, value);
    if (!answer.empty()) warnRoundTrip(*command, index, value); // Cancel enters nothing
}

void MainEntry::Reversecb_Click(int index)
{
    config_.Reversecb_Click(index, Reversecb[static_cast<std::size_t>(index)]->isChecked());
    changeMarkers_->show(config_);
}

void MainEntry::Voltagetb_Click()
{
    if (!peers_.keys.shiftDown()) return;
    peers_.windows.showWindow(ProgramWindow::DebugDisplay);
    peers_.windows.raiseWindow(ProgramWindow::DebugDisplay);
    DebugIDFr->setVisible(true);
}

// ---- test mode ----------------------------------------------------------------------

void MainEntry::Testcb_Click(int index)
{
    testMode_.Testcb_Click(index);
    UpdateTestButtons();
    followTestTmr();
}

void MainEntry::TestOffcb_Click(int index)
{
    testMode_.TestOffcb_Click(index);
    UpdateTestButtons();
    followTestTmr();
}

void MainEntry::CancelTest()
{
    testMode_.CancelTest();
    UpdateTestButtons();
}

void MainEntry::TestTmr_Timer()
{
    testMode_.TestTmr_Timer(OutMsg, TargetIsQVane, QVaneAxis);
    followTestTmr(); // stops before the last command goes out, which still does
    SendMessage();
}

void MainEntry::TestDrivecb_Click(int index)
{
    buildTuningDrive(OutMsg, index, TargetIsQVane, QVaneAxis);
    SendMessage();
}

void MainEntry::TestPtb_Click()
{
    const float current = testMode_.testPower();
    const std::string answer =
        peers_.dialogs.InputBox(std::string(testmode::PowerPrompt), std::string(kEntryTitle), askValueDefault(current));
    testMode_.applyTestPower(AskValueResult(current, answer));
    showTestValues();
}

void MainEntry::TestRatetb_Click()
{
    const float current = testMode_.testRate();
    const std::string answer =
        peers_.dialogs.InputBox(std::string(testmode::RatePrompt), std::string(kEntryTitle), askValueDefault(current));
    testMode_.applyTestRate(AskValueResult(current, answer));
    showTestValues();
}

void MainEntry::UpdateTestButtons()
{
    for (int m = 0; m < 2; ++m) {
        paintFace(TestOffcb[static_cast<std::size_t>(m)], testMode_.TestOffcbColour(m));
        paintFace(Testcb[static_cast<std::size_t>(m)], testMode_.TestcbColour(m));
    }
}

void MainEntry::showTestValues()
{
    TestPtb->setCaption(QString::fromStdString(testMode_.TestPtbCaption()));
    TestRatetb->setCaption(QString::fromStdString(testMode_.TestRatetbCaption()));
}

// The timer follows the model's enabled state; starting it only when it is stopped
// keeps a running test's 100 ms rhythm through further clicks.
void MainEntry::followTestTmr()
{
    if (!testMode_.TestTmrEnabled()) TestTmr->stop();
    else if (!TestTmr->isActive()) TestTmr->start();
}

// ---- help ---------------------------------------------------------------------------

void MainEntry::mnuAbout_Click() { peers_.windows.showWindow(ProgramWindow::About); }

// ---- start-up and quit --------------------------------------------------------------

void MainEntry::handleCommandLine(const std::string& commandLine)
{
    StartupFileLoaded = false;
    const StartupFile file = classifyCommandLine(commandLine);
    if (file.kind == StartupFileKind::None) return;
    if (file.kind == StartupFileKind::Configuration) {
        StartLoadOnInit(file.path);
        StartupFileLoaded = true;
    }
    ShowQVaneAxis(3);
    if (file.kind == StartupFileKind::TuningFile) peers_.tuning.LoadTuningFileOnInit(file.path);
    // A recording becomes the playback file, and the Comms Link window comes up with it,
    // since without a module the other windows wait.
    if (file.kind == StartupFileKind::Recording) {
        peers_.link.SetInputFilename(file.path);
        peers_.windows.showWindow(ProgramWindow::CommsLink);
    }
}

bool MainEntry::GoForQuit()
{
    const auto question = quitQuestion(peers_.tuning.GetDataModified(), config_.GetDataModified());
    if (!question) return true;
    return peers_.dialogs.MsgBox(std::string(question->prompt), box::YesNo, std::string(question->title)) ==
           Answer::Yes;
}

void MainEntry::RemoteQueryUnload()
{
    if (!GoForQuit()) return;
    quitting_ = true;
    peers_.windows.unloadAll();
    close();
}

void MainEntry::closeEvent(QCloseEvent* event)
{
    if (quitting_) { // RemoteQueryUnload has decided and unloaded already
        event->accept();
        return;
    }
    if (GoForQuit()) {
        quitting_ = true;
        peers_.windows.unloadAll();
        event->accept();
        return;
    }
    event->ignore(); // everything stays as it was
}

// ---- connection ---------------------------------------------------------------------

void MainEntry::KDXAxisSelcb_Click(int index)
{
    if (config_.GetDataModified() && !ConfirmReadOverChanges()) return;
    if (index >= 0 && index <= 2) {
        buildAxisSelect(OutMsg, index);
        QVaneAxis = index;
    } else {
        // Kept as it is (no button has such an index): the three elements go out with
        // the identifier the previous message left, and the selected axis stays.
        OutMsg[0] = 3;
        OutMsg[2] = static_cast<int16_t>(OutMsg[1] + 3);
    }
    SendMessage();
    RequestMemoryRead(true);
}

void MainEntry::TgtSelcb_Click(int index)
{
    if (index == 0) {
        peers_.link.SetBaudForKDX();
        QVaneConnectFr->setVisible(false);
        ShowQVaneAxis(3);
    } else {
        peers_.link.SetBaudForQVane();
        QVaneConnectFr->setVisible(true);
        ShowQVaneAxis(0);
    }
}

void MainEntry::ShowQVaneAxis(int axis)
{
    if (axis == LastQVaneAxis) return;
    LastQVaneAxis = axis;
    peers_.tuning.SetEnable(false);
    for (int i = 0; i < 3; ++i)
        paintFace(KDXAxisSelcb[static_cast<std::size_t>(i)], i == axis ? colours::Green : colours::LightGrey);
}

void MainEntry::ShowVersion(int major, int minor)
{
    if (major == shownMajor_ && minor == shownMinor_) return;
    shownMajor_ = major;
    shownMinor_ = minor;
    Versiontb->setText(QString::fromStdString(Format(major, "0") + "." + Format(minor, "00")));
}

} // namespace kdx

#include "moc_main_entry.cpp"
