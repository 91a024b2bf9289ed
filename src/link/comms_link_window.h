#pragma once
// The "Comms Link" window: owns the serial port, feeds the receiver, frames outgoing
// messages and runs the link watchdogs; its "File" frame plays a recording into the
// receiver instead of the port and trims recordings. It knows the rest of the program
// only through the message sink and the link-loss listener.
#include "core/colour.h"
#include "link/frame.h"
#include "link/link_control.h"
#include "link/link_state.h"
#include "link/message_sink.h"
#include "link/playback.h"
#include "link/receiver.h"
#include "link/trim.h"
#include "platform/serial_port.h"
#include "platform/clock.h"
#include "widgets/posted_box.h"

#include <QWidget>

#include <array>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

class QGroupBox;
class QLabel;
class QPushButton;
class QRadioButton;
class QTimer;

namespace kdx {

class Dialogs;

class CommsLink : public QWidget, public LinkControl {
    Q_OBJECT
public:
    static constexpr int PortCount = 18;
    // At the maximum rate a playback tick plays for this long, then lets the event loop
    // run and is called again at once.
    static constexpr int MaxRateSliceMs = 4;
    // ... and hands the receiver at most this many good messages a second (after a burst
    // of MaxRateBurst): the main window counts them in a 16-bit figure it resets every
    // 500 ms, which the program would otherwise outrun and overflow, losing messages.
    static constexpr int MaxRateMessagesPerSecond = 40000;
    static constexpr int MaxRateBurst = 2000;
    // Indicator colours of DoingInFile.
    static constexpr uint32_t PlayingColour = colours::Green;
    static constexpr uint32_t IdleColour = colours::LightGrey;
    // While a vanished port is awaited, it is looked for this often.
    static constexpr int ReconnectCheckMs = 250;

    // `clock` times the playback's pace and slices; it must outlive the window.
    CommsLink(SerialPort& port, Dialogs& dialogs, Clock& clock = systemClock(), QWidget* parent = nullptr);
    ~CommsLink() override;

    void setMessageSink(MessageSink* sink) { rx_.setSink(sink); }
    void setLinkLossListener(LinkLossListener* loss) { rx_.setLossListener(loss); }

    // Window load: settings, port scan, port selection, receiver guard cleared.
    void Form_Load();
    // Frames and transmits one message from the shared outgoing buffer.
    void SendMessage(const OutMsgBuffer& msg) override;
    void ResetSync() { rx_.ResetSync(); }
    bool GetCommsGood() const { return rx_.GetCommsGood(); }
    // Opens port number `port` (1 .. 18) of the last scan.
    void SelectCommsPort(int port);
    // Selects the port with this name (kdxtool --port). A name the scan did not list is
    // added, in the last slot when all 18 are taken, and keeps its slot in later scans.
    bool selectPortByName(const std::string& name);
    void SetBaudForKDX() override;
    void SetBaudForQVane() override;

    // Handlers.
    void RescanCOMportscb_Click();
    void CommsPortob_Click(int index);
    void CommsTimeout_Timer();
    void Comms2Timeout_Timer();
    // Bytes from the port (the receive event).
    void onPortBytes(std::span<const uint8_t> bytes);
    // Lets the window close for real (the program is ending) and closes the port.
    void unload();

    // ---- the link's state, and reconnecting a port that vanished ----
    const LinkStatus& linkStatus() const { return linkStatus_; }
    // Told of every change of linkStatus(), after it has changed.
    void setLinkStateListener(std::function<void(const LinkStatus&)> listener) { linkListener_ = std::move(listener); }
    // reconnectTimer's tick: reopens the awaited port if it is back, at its path or,
    // for a USB adapter, wherever the system lists it now.
    void reconnectTick();
    // After the working windows were revealed: a playing recording keeps this window,
    // with its controls, in view and on top.
    void keepInViewWhilePlaying();

    // ---- recorded input ----
    // The recording Start plays (the caption of LogFileInName); kdxtool's command line
    // names one this way.
    void SetInputFilename(const std::string& name) override;
    std::string inputFilename() const;
    void LogFileInChangecb_Click();
    void StartLogIn_Click();
    void PauseLogIn_Click();
    void StopLogIn_Click();
    // 0 .. 3: "Max", " x2", "x1", "x 0.5".
    void Rateob_Click(int index);
    void MarkStartcb_Click();
    void MarkEndcb_Click();
    void Trimcb_Click();
    // "Write File" copies a kilobyte, shows the count, and returns to the event loop
    // until the copy is done; a zero-interval timer calls this.
    void trimNextKilobyte();
    bool trimming() const { return trim_.copying(); }
    void FileInputTimer_Timer();
    Playback& playback() { return playback_; }
    const Playback& playback() const { return playback_; }

    Receiver& receiver() { return rx_; }
    const Receiver& receiver() const { return rx_; }
    std::string portName(int port) const;
    std::string currentPortName() const { return PortOpen ? portName(CurrentPort) : std::string(); }
    // Why no port is open: the last refused port with its reason, or that the scan found
    // none. Empty while a port is open.
    std::string openProblem() const;

    // Port state.
    bool PortOpen = false;
    int CurrentPort = 1;
    std::array<bool, PortCount + 1> PortAvailable{}; // 1-based
    bool PlaybackActive = false;                     // a recording feeds the receiver; port bytes are dropped
    bool PlaybackBusy = false;                       // a playback tick is running
    // The second activity watchdog: bytes seen, sampled every 200 ms.
    uint16_t ActivityCount = 0;
    uint16_t ActivitySnapshot = 0;
    bool ActivityGood = false;

    // Controls.
    QGroupBox* Frame1 = nullptr;
    std::array<QRadioButton*, PortCount> CommsPortob{};
    QPushButton* RescanCOMportscb = nullptr;
    QLabel* ScanMsglb = nullptr;
    // Beside each port button: its path, and the adapter's description and serial number.
    std::array<QLabel*, PortCount> CommsPortlb{};
    QLabel* CommsStatuslb = nullptr;
    QTimer* reconnectTimer = nullptr; // runs only while a vanished port is awaited
    QTimer* CommsTimeout = nullptr;
    QTimer* Comms2Timeout = nullptr;
    // The "File" frame.
    QGroupBox* CommsFileIPFr = nullptr;
    QLabel* LogFileInName = nullptr;
    QPushButton* LogFileInChangecb = nullptr;
    QPushButton* StartLogIn = nullptr;
    QPushButton* PauseLogIn = nullptr;
    QPushButton* StopLogIn = nullptr;
    std::array<QRadioButton*, 4> Rateob{};
    QPushButton* MarkStartcb = nullptr;
    QPushButton* MarkEndcb = nullptr;
    QLabel* MarkStarttb = nullptr;
    QLabel* MarkEndtb = nullptr;
    QPushButton* Trimcb = nullptr;
    QLabel* Trimtb = nullptr;
    QLabel* KProcessedlab = nullptr;
    QLabel* DoingInFile = nullptr;
    QTimer* FileInputTimer = nullptr;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void PortScan();
    void onPortLost(const std::string& reason);
    void checkPortButton(int port);
    void showPortButton(int port, bool available);
    void showPortDetails(int port, const PortIdentity& id);
    // The button number of `name`, listed (and kept listed by later scans) if it was not.
    int listPort(const std::string& name);
    // A box shown once the handler that found the fault has returned.
    void finishTrim();
    void showStatus();
    void buildFileFrame();
    void buildTimers();
    void showDoingInFile(bool playing);
    // The reconnect watch (comms_link_reconnect_window.cpp).
    void startWatch();
    void stopWatch();
    void updateLinkState();
    // A port just opened, by selection or by reconnecting: the window and the state say so.
    void portOpened(int port);
    PortIdentity identityOf(const std::string& path);

    SerialPort& port_;
    Dialogs& dialogs_;
    Receiver rx_;
    std::vector<std::string> names_;
    std::vector<PortIdentity> identities_; // what the last scan learnt of the listed ports
    PortIdentity openIdentity_;            // the port open now, or last open
    bool watching_ = false;                // the vanished port openIdentity_ is awaited
    bool writeFailed_ = false;             // the last port closed on a failed write
    bool lossBoxOpen_ = false;
    uint64_t goodAtOpen_ = 0; // the receiver's good messages when the port was opened
    std::chrono::system_clock::time_point lostAt_{};
    LinkStatus linkStatus_;
    std::function<void(const LinkStatus&)> linkListener_;
    std::vector<std::string> namedPorts_; // selected by name: listed by every scan
    std::string refusal_;                 // the last port that would not open, and why
    bool unloading_ = false;
    int lostPort_ = 0; // the port that failed underneath, until the loss is told
    int32_t shownErrors_ = -1;
    std::string shownStatus_;
    Playback playback_;
    Clock& clock_;
    QTimer* nextSlice_ = nullptr; // calls the tick again at once while a "Max" slice ended early
    // A consumer's fault left the receiver's guard held: playback waits for the
    // watchdog's tick to clear it, with its timer stopped.
    bool awaitingGuard_ = false;
    TrimCopy trim_;
    QTimer* trimTimer_ = nullptr;
    MessagePacer pacer_{MaxRateMessagesPerSecond, MaxRateBurst};
    // Raised by senders on timers and the receive path, and by the playback timer.
    PostedBox writeErrorBox_{this};
    PostedBox readErrorBox_{this};
    PostedBox trimErrorBox_{this}; // the copy runs on a timer
};

} // namespace kdx
