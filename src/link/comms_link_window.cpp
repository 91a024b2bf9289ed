#include "link/comms_link_window.h"

#include "core/colour.h"
#include "link/message_ids.h"
#include "platform/dialogs.h"
#include "platform/qt_guard.h"
#include "platform/serial_port.h"

#include <QCloseEvent>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QVBoxLayout>

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
    layout->addWidget(Frame1);

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
        dialogs_.MsgBox("Error writing to comms port: " + error + ". Please reselect comms port", box::Critical, "Comms Port");
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
    CommsTimeout->stop();
    Comms2Timeout->stop();
    PortOpen = false;
    port_.close();
    close();
}

void CommsLink::closeEvent(QCloseEvent* event)
{
    if (unloading_) {
        event->accept();
        return;
    }
    hide(); // the close box hides the window; the program keeps the link
    event->ignore();
}

} // namespace kdx

#include "moc_comms_link_window.cpp"
