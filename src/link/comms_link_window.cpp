#include "link/comms_link_window.h"

#include "core/colour.h"
#include "link/message_ids.h"
#include "link/trim.h"
#include "platform/dialogs.h"
#include "platform/qt_guard.h"
#include "platform/qt_window_close.h"
#include "platform/serial_port.h"
#include "widgets/face_colour.h"

#include <QCloseEvent>
#include <QDir>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScopeGuard>
#include <QTimer>
#include <QVBoxLayout>

#include <chrono>

namespace kdx {

namespace {

QString shortName(const std::string& path)
{
    const auto slash = path.find_last_of('/');
    return QString::fromStdString(slash == std::string::npos ? path : path.substr(slash + 1));
}

void setForeColour(QWidget* w, uint32_t bgr)
{
    const Rgb c = fromBgr(bgr);
    QPalette p = w->palette();
    p.setColor(QPalette::WindowText, QColor(c.r, c.g, c.b));
    p.setColor(QPalette::ButtonText, QColor(c.r, c.g, c.b));
    w->setPalette(p);
}

// The recording played when none is chosen, as the system names it.
constexpr std::string_view kDefaultInputName = "D:\\Logs\\Run 0.Log";
constexpr std::string_view kInputDialogTitle = "Data File Select";
constexpr std::string_view kInputFilter = "Recorded Data|*.Log;*.rec|All Files|*.*";
constexpr std::string_view kOpenErrorPrefix = "Error opening data file: ";
constexpr std::string_view kReadErrorPrefix = "Error reading data file: ";
constexpr std::string_view kFileErrorTitle = "File Open";
constexpr std::string_view kTrimErrorTitle = "KDX Tool";

// The system's default folder D:\Logs is ~/Logs away from Windows.
std::string localInputPath(std::string_view path)
{
#ifdef Q_OS_WIN
    return std::string(path);
#else
    constexpr std::string_view folder = "D:\\Logs";
    if (path.substr(0, folder.size()) != folder) return std::string(path);
    std::string rest(path.substr(folder.size()));
    std::replace(rest.begin(), rest.end(), '\\', '/');
    return QDir::cleanPath(QDir::homePath() + "/Logs").toStdString() + rest;
#endif
}

std::string folderOf(const std::string& path)
{
    const auto slash = path.find_last_of("/\\");
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

QPushButton* button(const char* name, const char* caption, QWidget* parent, const char* tip = nullptr)
{
    auto* b = new QPushButton(caption, parent);
    b->setObjectName(name);
    if (tip) b->setToolTip(tip);
    return b;
}

QLabel* caption(const char* name, const char* text, QWidget* parent)
{
    auto* l = new QLabel(text, parent);
    l->setObjectName(name);
    l->setFrameShape(QFrame::Panel);
    l->setFrameShadow(QFrame::Sunken);
    return l;
}

} // namespace

CommsLink::CommsLink(SerialPort& port, Dialogs& dialogs, QWidget* parent)
    : QWidget(parent, Qt::Window), port_(port), dialogs_(dialogs)
{
    setObjectName("CommsLink");
    setWindowTitle("Comms Link");

    auto* layout = new QVBoxLayout(this);
    Frame1 = new QGroupBox("Valid Comms Ports", this);
    Frame1->setObjectName("Frame1");
    auto* portsLayout = new QVBoxLayout(Frame1);
    for (int i = 0; i < PortCount; ++i) {
        auto* b = new QRadioButton(QString("COM%1").arg(i + 1), Frame1);
        b->setObjectName(QString("CommsPortob%1").arg(i));
        b->setVisible(false);
        portsLayout->addWidget(b);
        connect(b, &QRadioButton::clicked, this, [this, i] { guarded([&] { CommsPortob_Click(i); }); });
        CommsPortob[static_cast<std::size_t>(i)] = b;
    }
    auto* top = new QHBoxLayout;
    top->addWidget(Frame1);
    buildFileFrame();
    top->addWidget(CommsFileIPFr, 1);
    layout->addLayout(top);

    ScanMsglb = new QLabel("Please wait ...", this);
    ScanMsglb->setObjectName("ScanMsglb");
    ScanMsglb->setVisible(false);
    layout->addWidget(ScanMsglb);

    RescanCOMportscb = new QPushButton("Scan", this);
    RescanCOMportscb->setObjectName("RescanCOMportscb");
    RescanCOMportscb->setToolTip("Scan and show available COM ports");
    connect(RescanCOMportscb, &QPushButton::clicked, this, [this] { guarded([&] { RescanCOMportscb_Click(); }); });
    layout->addWidget(RescanCOMportscb);

    CommsStatuslb = new QLabel(this);
    CommsStatuslb->setObjectName("CommsStatuslb");
    CommsStatuslb->setWordWrap(true);
    layout->addWidget(CommsStatuslb);
    layout->addStretch(1);

    CommsTimeout = new QTimer(this);
    CommsTimeout->setObjectName("CommsTimeout");
    CommsTimeout->setInterval(500);
    connect(CommsTimeout, &QTimer::timeout, this, [this] { guarded([&] { CommsTimeout_Timer(); }); });
    Comms2Timeout = new QTimer(this);
    Comms2Timeout->setObjectName("Comms2Timeout");
    Comms2Timeout->setInterval(200);
    connect(Comms2Timeout, &QTimer::timeout, this, [this] { guarded([&] { Comms2Timeout_Timer(); }); });

    FileInputTimer = new QTimer(this);
    FileInputTimer->setObjectName("FileInputTimer");
    connect(FileInputTimer, &QTimer::timeout, this, [this] { guarded([&] { FileInputTimer_Timer(); }); });
    nextSlice_ = new QTimer(this);
    nextSlice_->setSingleShot(true);
    nextSlice_->setInterval(0);
    connect(nextSlice_, &QTimer::timeout, this, [this] { guarded([&] { FileInputTimer_Timer(); }); });
    clock_ = [] {
        return static_cast<int64_t>(
            std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
                .count());
    };
    Rateob_Click(2); // "x1"

    port_.onBytes = [this](std::span<const uint8_t> bytes) { onPortBytes(bytes); };
    port_.onLost = [this](const std::string& reason) {
        // Said once, after the port's own signal has returned.
        QTimer::singleShot(0, this, [this, reason] { guarded([&] { onPortLost(reason); }); });
    };
}

CommsLink::~CommsLink()
{
    port_.onBytes = nullptr;
    port_.onLost = nullptr;
    port_.close();
}

void CommsLink::Form_Load()
{
    port_.applySettings();
    PortScan();
    rx_.ProcessingMsg = false;
    CommsTimeout->start();
    Comms2Timeout->start();
}

std::string CommsLink::portName(int port) const
{
    if (port < 1 || port > static_cast<int>(names_.size())) return "COM" + std::to_string(port);
    return names_[static_cast<std::size_t>(port - 1)];
}

void CommsLink::PortScan()
{
    ScanMsglb->setVisible(true);
    ScanMsglb->repaint(); // painted now, without re-entering the event loop
    const std::string before = PortOpen ? portName(CurrentPort) : std::string();
    PortOpen = false;
    port_.close();
    names_ = port_.availablePorts();
    if (names_.size() > PortCount) names_.resize(PortCount);
    for (int p = 1; p <= PortCount; ++p) {
        QRadioButton* b = CommsPortob[static_cast<std::size_t>(p - 1)];
        bool ok = false;
        if (p <= static_cast<int>(names_.size())) {
            std::string error;
            ok = port_.open(names_[static_cast<std::size_t>(p - 1)], error);
            if (ok) port_.close();
            b->setText(shortName(names_[static_cast<std::size_t>(p - 1)]));
            b->setToolTip(QString::fromStdString(names_[static_cast<std::size_t>(p - 1)]));
        }
        PortAvailable[static_cast<std::size_t>(p)] = ok;
        b->setVisible(ok);
        setForeColour(b, ok ? colours::Green : colours::LightGrey);
    }
    // Reopen the port in use before the scan when it is still there.
    int reopen = CurrentPort;
    for (int p = 1; p <= static_cast<int>(names_.size()); ++p)
        if (!before.empty() && names_[static_cast<std::size_t>(p - 1)] == before) reopen = p;
    SelectCommsPort(reopen);
    ScanMsglb->setVisible(false);
}

void CommsLink::checkPortButton(int port)
{
    for (int i = 0; i < PortCount; ++i) {
        QRadioButton* b = CommsPortob[static_cast<std::size_t>(i)];
        const bool on = PortOpen && i == port - 1;
        if (b->isChecked() != on) {
            b->setAutoExclusive(false);
            b->setChecked(on);
            b->setAutoExclusive(true);
        }
    }
}

void CommsLink::SelectCommsPort(int port)
{
    if (port < 1 || port > PortCount || !PortAvailable[static_cast<std::size_t>(port)]) {
        checkPortButton(CurrentPort); // refused without a message
        return;
    }
    PortOpen = false;
    port_.close();
    std::string error;
    if (!port_.open(portName(port), error)) {
        checkPortButton(0);
        showStatus();
        dialogs_.MsgBox("Error opening comms port " + std::to_string(port) + " : " + error, box::Critical, "Comms Port");
        return;
    }
    PortOpen = true;
    CurrentPort = port;
    rx_.ResetSync();
    checkPortButton(port);
    showStatus();
}

bool CommsLink::selectPortByName(const std::string& name)
{
    auto it = std::find(names_.begin(), names_.end(), name);
    if (it == names_.end()) {
        if (names_.size() >= PortCount) return false;
        names_.push_back(name);
        it = names_.end() - 1;
        const int p = static_cast<int>(names_.size());
        QRadioButton* b = CommsPortob[static_cast<std::size_t>(p - 1)];
        b->setText(shortName(name));
        b->setToolTip(QString::fromStdString(name));
        b->setVisible(true);
        setForeColour(b, colours::Green);
        PortAvailable[static_cast<std::size_t>(p)] = true;
    }
    const int p = static_cast<int>(it - names_.begin()) + 1;
    PortAvailable[static_cast<std::size_t>(p)] = true;
    CommsPortob[static_cast<std::size_t>(p - 1)]->setVisible(true);
    SelectCommsPort(p);
    return PortOpen && CurrentPort == p;
}

void CommsLink::SetBaudForKDX() { port_.applySettings(); }
void CommsLink::SetBaudForQVane() { port_.applySettings(); }

void CommsLink::RescanCOMportscb_Click() { PortScan(); }

void CommsLink::CommsPortob_Click(int index) { SelectCommsPort(index + 1); }

void CommsLink::SendMessage(const OutMsgBuffer& msg)
{
    if (!PortOpen) return;
    std::string error;
    bool ok = false;
    try {
        const uint8_t start = msg::StartByte;
        ok = port_.write(std::span<const uint8_t>(&start, 1), error);
        if (ok) {
            const std::vector<uint8_t> body = frameBody(msg);
            ok = body.empty() || port_.write(body, error);
        }
    } catch (const HostError& e) {
        error = e.what();
    }
    if (!ok) {
        PortOpen = false;
        showStatus();
        writeErrorBox_.post([this, error] {
            dialogs_.MsgBox("Error writing to comms port: " + error + ". Please reselect comms port", box::Critical,
                            "Comms Port");
        });
    }
}

void CommsLink::onPortBytes(std::span<const uint8_t> bytes)
{
    ++ActivityCount;
    if (PlaybackActive) return; // read and dropped while a recording plays
    rx_.receiveBytes(bytes);
}

void CommsLink::onPortLost(const std::string& reason)
{
    if (!PortOpen) return;
    PortOpen = false;
    port_.close();
    checkPortButton(0);
    showStatus();
    dialogs_.MsgBox("Comms port " + portName(CurrentPort) + " was lost: " + reason +
                        ". Please reselect comms port",
                    box::Critical, "Comms Port");
}

void CommsLink::CommsTimeout_Timer()
{
    rx_.CommsTimeout_Timer();
    showStatus();
}

void CommsLink::Comms2Timeout_Timer()
{
    if (ActivityCount == ActivitySnapshot) ActivityGood = false;
    else {
        ActivitySnapshot = ActivityCount;
        ActivityGood = true;
    }
}

void CommsLink::showStatus()
{
    std::string status = PortOpen ? "Open: " + portName(CurrentPort) : "No port open";
    if (PortOpen) status += rx_.GetCommsGood() ? " (telemetry)" : " (no telemetry)";
    if (status != shownStatus_ || rx_.CommsErrorCount != shownErrors_) {
        shownStatus_ = status;
        shownErrors_ = rx_.CommsErrorCount;
        CommsStatuslb->setText(QString::fromStdString(status) +
                               QString("\nErrors: %1").arg(rx_.CommsErrorCount));
    }
}

void CommsLink::unload()
{
    unloading_ = true;
    StopLogIn_Click();
    CommsTimeout->stop();
    Comms2Timeout->stop();
    PortOpen = false;
    port_.close();
    close();
}

void CommsLink::closeEvent(QCloseEvent* event)
{
    closeUnlessUnloading(event, unloading_, [this] { hide(); }); // the program keeps the link
}

// ---- recorded input -----------------------------------------------------------------

void CommsLink::buildFileFrame()
{
    CommsFileIPFr = new QGroupBox("File", this);
    CommsFileIPFr->setObjectName("CommsFileIPFr");
    QGroupBox* f = CommsFileIPFr;
    auto* grid = new QGridLayout(f);

    LogFileInName = caption("LogFileInName", "", f);
    LogFileInName->setMinimumWidth(220);
    LogFileInName->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // a long path does not widen the window
    LogFileInName->setTextInteractionFlags(Qt::TextSelectableByMouse);
    SetInputFilename(localInputPath(kDefaultInputName));
    LogFileInChangecb = button("LogFileInChangecb", "Change", f, "Select a new data-file to read from");
    grid->addWidget(LogFileInName, 0, 0, 1, 3);
    grid->addWidget(LogFileInChangecb, 0, 3);

    StartLogIn = button("StartLogIn", "Start", f, "Begin reading data from file");
    PauseLogIn = button("PauseLogIn", "Pause", f, "Pause data-play");
    StopLogIn = button("StopLogIn", "Stop", f, "Stop playing data");
    DoingInFile = new QLabel(f);
    DoingInFile->setObjectName("DoingInFile");
    DoingInFile->setFixedSize(16, 16);
    DoingInFile->setFrameShape(QFrame::Box);
    DoingInFile->setToolTip("Green while a file is playing");
    auto* play = new QHBoxLayout;
    play->addWidget(StartLogIn);
    play->addWidget(PauseLogIn);
    play->addWidget(StopLogIn);
    play->addWidget(DoingInFile);
    grid->addLayout(play, 1, 0, 1, 4);

    auto* rates = new QHBoxLayout;
    for (std::size_t i = 0; i < Rateob.size(); ++i) {
        auto* b = new QRadioButton(QString::fromUtf8(playback::Rates[i].caption.data(),
                                                     static_cast<qsizetype>(playback::Rates[i].caption.size())),
                                   f);
        b->setObjectName(QString("Rateob%1").arg(i));
        const int index = static_cast<int>(i);
        connect(b, &QRadioButton::clicked, this, [this, index] { guarded([&] { Rateob_Click(index); }); });
        rates->addWidget(b);
        Rateob[i] = b;
    }
    grid->addLayout(rates, 2, 0, 1, 4);

    MarkStartcb = button("MarkStartcb", "Mark Start", f);
    MarkStarttb = caption("MarkStarttb", "0K", f);
    MarkEndcb = button("MarkEndcb", "Mark End", f);
    MarkEndtb = caption("MarkEndtb", "0K", f);
    grid->addWidget(MarkStartcb, 3, 0);
    grid->addWidget(MarkStarttb, 3, 1);
    grid->addWidget(MarkEndcb, 3, 2);
    grid->addWidget(MarkEndtb, 3, 3);

    Trimcb = button("Trimcb", "Write File", f);
    Trimtb = caption("Trimtb", "0K", f);
    KProcessedlab = caption("KProcessedlab", "0K", f);
    Trimtb->setToolTip("Bytes written by Write File");
    KProcessedlab->setToolTip("Bytes played");
    grid->addWidget(Trimcb, 4, 0);
    grid->addWidget(Trimtb, 4, 1);
    grid->addWidget(KProcessedlab, 4, 3);
    grid->setRowStretch(5, 1);

    const std::pair<QPushButton*, void (CommsLink::*)()> clicks[] = {
        {LogFileInChangecb, &CommsLink::LogFileInChangecb_Click},
        {StartLogIn, &CommsLink::StartLogIn_Click},
        {PauseLogIn, &CommsLink::PauseLogIn_Click},
        {StopLogIn, &CommsLink::StopLogIn_Click},
        {MarkStartcb, &CommsLink::MarkStartcb_Click},
        {MarkEndcb, &CommsLink::MarkEndcb_Click},
        {Trimcb, &CommsLink::Trimcb_Click},
    };
    for (const auto& click : clicks) {
        const auto handler = click.second; // a copy: clang 14 cannot capture a structured binding
        connect(click.first, &QPushButton::clicked, this, [this, handler] { guarded([&] { (this->*handler)(); }); });
    }
    showDoingInFile(false);
}

void CommsLink::showDoingInFile(bool playing)
{
    paintFace(DoingInFile, playing ? PlayingColour : IdleColour);
}

void CommsLink::SetInputFilename(const std::string& name)
{
    const QString text = QString::fromStdString(name);
    LogFileInName->setText(text);
    LogFileInName->setToolTip(text);
}

std::string CommsLink::inputFilename() const { return LogFileInName->text().toStdString(); }

void CommsLink::LogFileInChangecb_Click()
{
    FileDialogRequest r;
    r.title = std::string(kInputDialogTitle);
    r.filter = std::string(kInputFilter);
    r.fileName = inputFilename();
    r.initialDir = folderOf(r.fileName);
    const auto path = dialogs_.OpenFile(r);
    if (path && !path->empty()) SetInputFilename(*path);
}

void CommsLink::StartLogIn_Click()
{
    if (playback_.PlaybackPaused) PauseLogIn_Click();
    if (const auto error = playback_.open(inputFilename())) {
        dialogs_.MsgBox(std::string(kOpenErrorPrefix) + *error, box::Critical, std::string(kFileErrorTitle));
        return;
    }
    PlaybackActive = true;
    pacer_.reset(clock_());
    rx_.ResetSync(); // a frame half received from the port is not finished from the file
    showDoingInFile(true);
    FileInputTimer->start();
    PlaybackBusy = false;
    KProcessedlab->setText(QString::fromStdString(KiloCaption(0)));
}

void CommsLink::PauseLogIn_Click()
{
    playback_.PlaybackPaused = !playback_.PlaybackPaused;
    PauseLogIn->setText(playback_.PlaybackPaused ? "Resume" : "Pause");
}

void CommsLink::StopLogIn_Click()
{
    playback_.close();
    FileInputTimer->stop();
    nextSlice_->stop();
    showDoingInFile(false);
    if (PlaybackActive) rx_.ResetSync(); // the port feeds the receiver again, from a start byte
    PlaybackActive = false;
    if (playback_.PlaybackPaused) PauseLogIn_Click();
}

void CommsLink::Rateob_Click(int index)
{
    if (index < 0 || index >= static_cast<int>(playback::Rates.size())) return;
    const playback::Rate& rate = playback::Rates[static_cast<std::size_t>(index)];
    FileInputTimer->setInterval(rate.interval);
    playback_.PlaybackMaxRate = rate.maxRate;
    QRadioButton* b = Rateob[static_cast<std::size_t>(index)];
    if (!b->isChecked()) b->setChecked(true);
}

void CommsLink::MarkStartcb_Click()
{
    playback_.MarkStartNow();
    MarkStarttb->setText(QString::fromStdString(KiloCaption(playback_.MarkStart)));
}

void CommsLink::MarkEndcb_Click()
{
    playback_.MarkEndNow();
    MarkEndtb->setText(QString::fromStdString(KiloCaption(playback_.MarkEnd)));
}

void CommsLink::FileInputTimer_Timer()
{
    if (PlaybackBusy) return;
    PlaybackBusy = true;
    const auto done = qScopeGuard([this] { PlaybackBusy = false; });
    if (!playback_.isOpen()) return;
    const int64_t start = clock_();
    const uint64_t goodBefore = rx_.goodMessages;
    const double allowance = pacer_.allowance(start);
    bool paced = false;
    const auto sliceSpent = [&] {
        paced = static_cast<double>(rx_.goodMessages - goodBefore) >= allowance;
        return paced || clock_() - start >= int64_t{MaxRateSliceMs} * 1000000;
    };
    const Playback::Tick t = playback_.tick(
        [this](std::span<const uint8_t> bytes) { rx_.receiveBytes(bytes); },
        [this](int32_t played) { KProcessedlab->setText(QString::fromStdString(KiloCaption(played))); },
        sliceSpent);
    if (playback_.PlaybackMaxRate) pacer_.spend(static_cast<double>(rx_.goodMessages - goodBefore));
    if (t.reachedEnd) {
        const std::string error = playback_.readError();
        StopLogIn_Click();
        if (!error.empty())
            readErrorBox_.post([this, error] {
                dialogs_.MsgBox(std::string(kReadErrorPrefix) + error, box::Critical, std::string(kFileErrorTitle));
            });
    } else if (t.more && !paced) {
        nextSlice_->start(); // the event loop runs once, then the next slice
    }
    // Paced: the 1 ms timer comes back once the allowance has grown.
}

void CommsLink::Trimcb_Click()
{
    // The trim reads the recording from its beginning itself: whatever was playing
    // stops first, and nothing reaches the receiver meanwhile. It ends idle, at 0 bytes.
    StopLogIn_Click();
    const TrimResult r = trimRecording(inputFilename(), playback_.MarkStart, playback_.MarkEnd);
    if (r.copied >= playback::KiloByte) Trimtb->setText(QString::fromStdString(KiloCaption(r.copied)));
    playback_.BytesPlayed = 0;
    playback_.PlaybackAtEnd = false;
    if (!r.ok) dialogs_.MsgBox(std::string(trim::ErrorText), box::OkOnly, std::string(kTrimErrorTitle));
}

} // namespace kdx

#include "moc_comms_link_window.cpp"
