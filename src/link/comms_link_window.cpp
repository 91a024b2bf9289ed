#include "link/comms_link_window.h"

#include "core/colour.h"
#include "link/message_ids.h"
#include "platform/dialogs.h"
#include "platform/qt_guard.h"
#include "platform/qt_window_close.h"
#include "platform/serial_port.h"
#include "widgets/face_colour.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScopeGuard>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

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

// The ports the window lists: the system's, in its order, and every port selected by
// name among them. When they are more than the buttons, the system's last ports make
// room for the named ones.
std::vector<std::string> listedPorts(std::vector<std::string> ports, const std::vector<std::string>& named)
{
    const auto isNamed = [&](const std::string& p) { return std::find(named.begin(), named.end(), p) != named.end(); };
    for (const std::string& n : named)
        if (std::find(ports.begin(), ports.end(), n) == ports.end()) ports.push_back(n);
    for (auto it = ports.end(); ports.size() > CommsLink::PortCount && it != ports.begin();) {
        --it;
        if (!isNamed(*it)) it = ports.erase(it);
    }
    if (ports.size() > CommsLink::PortCount) ports.resize(CommsLink::PortCount);
    return ports;
}

} // namespace

CommsLink::CommsLink(SerialPort& port, Dialogs& dialogs, Clock& clock, QWidget* parent)
    : QWidget(parent, Qt::Window), port_(port), dialogs_(dialogs), clock_(clock)
{
    setObjectName("CommsLink");
    setWindowTitle("Comms Link");

    auto* layout = new QVBoxLayout(this);
    Frame1 = new QGroupBox("Valid Comms Ports", this);
    Frame1->setObjectName("Frame1");
    auto* portsLayout = new QGridLayout(Frame1);
    for (int i = 0; i < PortCount; ++i) {
        auto* b = new QRadioButton(QString("COM%1").arg(i + 1), Frame1);
        b->setObjectName(QString("CommsPortob%1").arg(i));
        b->setVisible(false);
        portsLayout->addWidget(b, i, 0);
        connect(b, &QRadioButton::clicked, this,
                [this, i] { guarded("CommsPortob_Click", [&] { CommsPortob_Click(i); }); });
        CommsPortob[static_cast<std::size_t>(i)] = b;
        auto* details = new QLabel(Frame1);
        details->setObjectName(QString("CommsPortlb%1").arg(i));
        details->setVisible(false);
        portsLayout->addWidget(details, i, 1);
        CommsPortlb[static_cast<std::size_t>(i)] = details;
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
    connect(RescanCOMportscb, &QPushButton::clicked, this,
            [this] { guarded("RescanCOMportscb_Click", [&] { RescanCOMportscb_Click(); }); });
    layout->addWidget(RescanCOMportscb);

    CommsStatuslb = new QLabel(this);
    CommsStatuslb->setObjectName("CommsStatuslb");
    CommsStatuslb->setWordWrap(true);
    layout->addWidget(CommsStatuslb);
    layout->addStretch(1);

    buildTimers();
    Rateob_Click(2); // "x1"

    port_.onBytes = [this](std::span<const uint8_t> bytes) { onPortBytes(bytes); };
    port_.onLost = [this](const std::string& reason) {
        // Said once, after the port's own signal has returned. The loss can surface in
        // the middle of a write; SendMessage then leaves the telling to this.
        lostPort_ = PortOpen ? CurrentPort : 0;
        QTimer::singleShot(0, this, [this, reason] { guarded("onPortLost", [&] { onPortLost(reason); }); });
    };
}

// The watchdog, the port's timers and the playback's and trim's pacers.
void CommsLink::buildTimers()
{
    CommsTimeout = new QTimer(this);
    CommsTimeout->setObjectName("CommsTimeout");
    CommsTimeout->setInterval(500);
    connect(CommsTimeout, &QTimer::timeout, this,
            [this] { guarded("CommsTimeout_Timer", [&] { CommsTimeout_Timer(); }); });
    Comms2Timeout = new QTimer(this);
    Comms2Timeout->setObjectName("Comms2Timeout");
    Comms2Timeout->setInterval(200);
    connect(Comms2Timeout, &QTimer::timeout, this,
            [this] { guarded("Comms2Timeout_Timer", [&] { Comms2Timeout_Timer(); }); });
    reconnectTimer = new QTimer(this);
    reconnectTimer->setObjectName("reconnectTimer");
    reconnectTimer->setInterval(ReconnectCheckMs);
    connect(reconnectTimer, &QTimer::timeout, this, [this] { guarded("reconnectTick", [&] { reconnectTick(); }); });

    FileInputTimer = new QTimer(this);
    FileInputTimer->setObjectName("FileInputTimer");
    connect(FileInputTimer, &QTimer::timeout, this,
            [this] { guarded("FileInputTimer_Timer", [&] { FileInputTimer_Timer(); }); });
    nextSlice_ = new QTimer(this);
    nextSlice_->setSingleShot(true);
    nextSlice_->setInterval(0);
    connect(nextSlice_, &QTimer::timeout, this,
            [this] { guarded("FileInputTimer_Timer", [&] { FileInputTimer_Timer(); }); });
    trimTimer_ = new QTimer(this);
    trimTimer_->setInterval(0);
    connect(trimTimer_, &QTimer::timeout, this, [this] { guarded("trimNextKilobyte", [&] { trimNextKilobyte(); }); });
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
    // The port awaited since it vanished counts as the one in use.
    const std::string before = PortOpen ? portName(CurrentPort) : watching_ ? openIdentity_.path : std::string();
    PortOpen = false;
    port_.close();
    identities_ = port_.describePorts();
    std::vector<std::string> system;
    for (const PortIdentity& id : identities_) system.push_back(id.path);
    names_ = listedPorts(std::move(system), namedPorts_);
    refusal_.clear();
    for (int p = 1; p <= PortCount; ++p) {
        bool ok = false;
        if (p <= static_cast<int>(names_.size())) {
            std::string error;
            const std::string& name = names_[static_cast<std::size_t>(p - 1)];
            ok = port_.open(name, error);
            if (ok) port_.close();
            else if (refusal_.empty()) refusal_.append(name).append(": ").append(error); // the first refusal tells most
        }
        showPortButton(p, ok);
    }
    // Reopen the port in use before the scan when it is still there. One still awaited
    // is awaited on: opening whatever now holds its number would take another device.
    int reopen = CurrentPort;
    bool found = false;
    for (int p = 1; p <= static_cast<int>(names_.size()); ++p)
        if (!before.empty() && names_[static_cast<std::size_t>(p - 1)] == before) {
            reopen = p;
            found = true;
        }
    if (watching_ && !found) {
        checkPortButton(0);
        showStatus();
    } else {
        SelectCommsPort(reopen);
    }
    ScanMsglb->setVisible(false);
}

void CommsLink::showPortButton(int port, bool available)
{
    QRadioButton* b = CommsPortob[static_cast<std::size_t>(port - 1)];
    if (port <= static_cast<int>(names_.size())) {
        const std::string& name = names_[static_cast<std::size_t>(port - 1)];
        b->setText(shortName(name));
        showPortDetails(port, identityOf(name));
    }
    PortAvailable[static_cast<std::size_t>(port)] = available;
    b->setVisible(available);
    CommsPortlb[static_cast<std::size_t>(port - 1)]->setVisible(available);
    setForeColour(b, available ? colours::Green : colours::LightGrey);
}

// Checks the button of `port` alone (none for 0).
void CommsLink::checkPortButton(int port)
{
    for (int i = 0; i < PortCount; ++i) {
        QRadioButton* b = CommsPortob[static_cast<std::size_t>(i)];
        const bool on = i == port - 1;
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
        checkPortButton(CurrentPort); // refused without a message, open or not
        return;
    }
    stopWatch(); // a port chosen ends the wait for a vanished one
    writeFailed_ = false;
    PortOpen = false;
    port_.close();
    std::string error;
    if (!port_.open(portName(port), error)) {
        refusal_ = portName(port) + ": " + error;
        checkPortButton(0);
        showStatus();
        updateLinkState();
        dialogs_.MsgBox("Error opening comms port " + std::to_string(port) + " : " + error, box::Critical,
                        "Comms Port");
        return;
    }
    portOpened(port);
}

void CommsLink::portOpened(int port)
{
    PortOpen = true;
    CurrentPort = port;
    openIdentity_ = identityOf(portName(port));
    goodAtOpen_ = rx_.goodMessages;
    rx_.ResetSync();
    checkPortButton(port);
    showStatus();
    updateLinkState();
}

std::string CommsLink::openProblem() const
{
    if (PortOpen) return {};
    if (!refusal_.empty()) return refusal_;
    return names_.empty() ? "no serial port found" : "no port selected";
}

bool CommsLink::selectPortByName(const std::string& name)
{
    const int p = listPort(name);
    SelectCommsPort(p);
    return PortOpen && CurrentPort == p;
}

int CommsLink::listPort(const std::string& name)
{
    if (std::find(namedPorts_.begin(), namedPorts_.end(), name) == namedPorts_.end()) namedPorts_.push_back(name);
    if (std::find(names_.begin(), names_.end(), name) == names_.end()) {
        const std::vector<std::string> before = names_;
        names_ = listedPorts(names_, namedPorts_);
        for (int p = 1; p <= static_cast<int>(names_.size()); ++p) {
            const auto i = static_cast<std::size_t>(p - 1);
            if (i >= before.size() || before[i] != names_[i]) showPortButton(p, true); // opening it tells
        }
    }
    const int p = static_cast<int>(std::find(names_.begin(), names_.end(), name) - names_.begin()) + 1;
    showPortButton(p, true);
    return p;
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
    } catch (const HostError& e) { // an element 0 above 255, found after the start byte went out
        ok = false;
        error = e.what();
    }
    if (!ok) {
        PortOpen = false;
        writeFailed_ = true;
        lostAt_ = std::chrono::system_clock::now();
        showStatus();
        updateLinkState();
        // Senders run from timers too (the gain message, the test commands).
        if (lostPort_ == 0)
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
    const int lost = std::exchange(lostPort_, 0);
    if (lost == 0) return; // no port was open, or its failure was told already
    PortOpen = false;
    port_.close();
    checkPortButton(0);
    startWatch();
    showStatus();
    // A port that comes and goes while its box is up says nothing more.
    if (lossBoxOpen_) return;
    lossBoxOpen_ = true;
    const auto closed = qScopeGuard([this] { lossBoxOpen_ = false; });
    dialogs_.MsgBox("Comms port " + portName(lost) + " was lost: " + reason +
                        ". It reopens by itself when it is back; or select another port",
                    box::Critical, "Comms Port");
}

void CommsLink::CommsTimeout_Timer()
{
    const bool wasGood = rx_.GetCommsGood();
    rx_.CommsTimeout_Timer();
    if (wasGood && !rx_.GetCommsGood()) lostAt_ = std::chrono::system_clock::now();
    if (awaitingGuard_) {
        awaitingGuard_ = false;
        if (playback_.isOpen()) FileInputTimer->start();
    }
    showStatus();
    updateLinkState(); // telemetry heard, or not, since the last tick
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
    std::string status = PortOpen    ? "Open: " + portName(CurrentPort)
                         : watching_ ? "Waiting for " + openIdentity_.path + " to come back"
                                     : "No port open";
    if (PortOpen) status += rx_.GetCommsGood() ? " (telemetry)" : " (no telemetry)";
    if (status != shownStatus_ || rx_.CommsErrorCount != shownErrors_) {
        shownStatus_ = status;
        shownErrors_ = rx_.CommsErrorCount;
        CommsStatuslb->setText(QString::fromStdString(status) + QString("\nErrors: %1").arg(rx_.CommsErrorCount));
    }
}

void CommsLink::unload()
{
    unloading_ = true;
    trimTimer_->stop();
    trim_.abandon();
    StopLogIn_Click();
    CommsTimeout->stop();
    Comms2Timeout->stop();
    stopWatch();
    PortOpen = false;
    port_.close();
    updateLinkState();
    close();
}

void CommsLink::closeEvent(QCloseEvent* event)
{
    closeUnlessUnloading(event, unloading_, [this] { hide(); }); // the program keeps the link
}

} // namespace kdx

#include "moc_comms_link_window.cpp"
