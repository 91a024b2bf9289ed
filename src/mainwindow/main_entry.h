#pragma once
// The main window: the module's configuration in its three views (memory image,
// parameter set, labels), the live values, and the connection choices. It is the
// message sink of the link. Logic lives in kdxcore (DriverConfig and friends); this
// class owns the controls and the handlers.
#include "config/driver_config.h"
#include "core/atomic_file.h"
#include "config/connection_select.h"
#include "config/param_label.h"
#include "config/test_mode.h"
#include "link/frame.h"
#include "link/comms_quality.h"
#include "link/link_control.h"
#include "link/message_sink.h"
#include "platform/clock.h"
#include "platform/program_windows.h"
#include "telemetry/changed_only.h"
#include "telemetry/cyclic_telemetry.h"
#include "telemetry/live_captions.h"
#include "tuning/gain_sender.h"
#include "tuning/gain_store.h"

#include <QMainWindow>

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <string>

class QAction;
class QCheckBox;
class QGroupBox;
class QLabel;
class QPushButton;
class QRadioButton;
class QTimer;
class QVBoxLayout;

namespace kdx {

class ChangeMarkers;
class ClickLabel;
class DebugChannel;
class Dialogs;
struct EntryCommand;
class KeyState;
class RefreshPacer;
class TelemetryLog;
class TuningDisplay;

class MainEntry : public QMainWindow,
                  public MessageSink,
                  public GainSender,
                  public QuitRequester,
                  public ConnectionSelect,
                  public BootloaderRestart {
    Q_OBJECT
public:
    // The other windows as this one uses them; all must outlive it.
    struct Peers {
        Dialogs& dialogs;
        const KeyState& keys;
        LinkControl& link;
        ProgramWindows& windows;
        TuningDisplay& tuning;
        TelemetryLog& log;
        DebugChannel& debug;
        const AtomicSaver& saver = PlainSaver; // writes the configuration files
        Clock& clock = systemClock();          // paces the live-value labels
    };
    explicit MainEntry(const Peers& peers, QWidget* parent = nullptr);
    ~MainEntry() override;

    void Form_Load();

    // Message sink.
    void PutCyclicMsg(const MsgView& msg) override;
    void PutCyclicQvaneMsg(const MsgView& msg) override;
    void PutMemoryMsg(const MsgView& msg) override;
    void PutAxisMemoryMsg(const MsgView& msg) override;
    void PutMessageReceived(bool good) override;

    // Sends the shared outgoing buffer through the link.
    void SendMessage();
    // The gain message of the tuning window, direct or relayed by the target mode.
    void SendPID(float P, float I, float IA, float D, float G, float V1, float V2, int MotorIndex) override;
    // Restarts the module into its bootloader (About window and RestartIntoBLcb): always
    // the direct form 3, 254, 257, whatever the target.
    void RestartIntoBootloader() override;
    // Ends both motors' direction tests (the tuning window calls it); a motor switched
    // off stays off.
    void CancelTest() override;
    // The gain accessors as the tuning window's gain panel uses them.
    GainStore& gainStore() { return gainStore_; }

    // Configuration.
    DriverConfig& config() { return config_; }
    bool GetDataModified() const { return config_.GetDataModified(); }
    bool GetGainsHaveBeenLoaded() const { return config_.GetGainsHaveBeenLoaded(); }
    void RefreshParamDisplay();
    void StartLoadOnInit(const std::string& path);
    // Keeps the file name of a configuration file's path (what follows the last folder
    // separator) and shows it in the window's caption.
    void SetShortFileName(const std::string& path);

    // Handlers.
    void CommsQualityTmr_Timer();
    void MemReqTimer_Timer();
    void ReadConfigcb_Click();
    void WriteConfigcb_Click();
    void LoadConfigcb_Click();
    void SaveConfigcb_Click();
    void mnuLoad_Click() { LoadConfigcb_Click(); }
    void mnuSave_Click() { SaveConfigcb_Click(); }
    void Reversecb_Click(int index);
    // Shift+click shows the debug display and the debug identifier; a plain click nothing.
    void Voltagetb_Click();
    // Test mode.
    void Testcb_Click(int index);
    void TestOffcb_Click(int index);
    void TestDrivecb_Click(int index);
    void TestPtb_Click();
    void TestRatetb_Click();
    void TestTmr_Timer();
    void RestartIntoBLcb_Click();
    // Help, About: the About window, modal to this window.
    void mnuAbout_Click();
    // A click on a parameter label (PTermtb_Click(Index) and the others).
    void ParamLabel_Click(ParamLabel label, int index);
    void KDXAxisSelcb_Click(int index) override;
    void TgtSelcb_Click(int index);
    // Brings up the working windows (first telemetry, or Shift+click on the wait logo).
    void SetDisplayVisible() override;
    // The one quit decision: asks about unsaved tuning data first, unwritten settings
    // second, at most one question. True means quit.
    bool GoForQuit();
    // File, Exit of the main and tuning windows, and the wait window's Quit.
    void RemoteQueryUnload() override;
    // Handles the command line's file (a .kdx configuration or a .btf tuning file).
    void handleCommandLine(const std::string& commandLine);
    // What the telemetry told of the target, for the status bar: the firmware version
    // shown (-1 before any) and the Q-Vane axis shown (3: none).
    int shownVersionMajor() const { return shownMajor_; }
    int shownVersionMinor() const { return shownMinor_; }
    int shownQVaneAxis() const { return LastQVaneAxis; }
    // Runs after SetDisplayVisible has revealed the working windows.
    std::function<void()> afterReveal;
    bool StartupFileLoaded = false;
    // The telemetry log's header line for the current target mode, with the debug
    // display's titles when it logs its data; CR LF included.
    std::string GetTelemetryFileTitles() const;

    // The live-value labels show a message at most this long after it came, and are
    // refreshed at most every LiveDisplaySpacingMs: at 100 messages a second, every fifth
    // message refreshes them. The margin lets a message a little early still do it.
    static constexpr int LiveDisplayMs = 50;
    static constexpr int LiveDisplaySpacingMs = 45;
    // Refreshes the live-value labels now if a message came since the last refresh (the
    // next message or the display timer does this; tests call it instead of waiting).
    void flushLiveDisplay();
    // Greys the live values while the link is lost; the next refresh after a message
    // shows them fresh again.
    void setLiveValuesStale(bool stale);
    bool liveValuesStale() const { return liveStale_; }

    // The window's width with both motors' panels, in twips (15 to the pixel at 96 dpi).
    static constexpr int TwoMotorWidthTwips = 9720;

    // State.
    bool TargetIsQVane = false;
    int QVaneAxis = 0; // the selected Q-Vane axis: 0 Tilt, 1 Roll, 2 Pan
    CommsQualityCount messageCount;
    float CommsQuality = 0;
    OutMsgBuffer OutMsg{};
    std::string shortFileName; // the last configuration file loaded or saved, without its folder
    CyclicTelemetry live;      // the live values, in display units
    bool TelemetrySeen = false;
    bool DisplayVisible = false;
    const TestMode& testMode() const { return testMode_; }

    // Controls.
    QLabel* CommsQualitylb = nullptr;
    QTimer* CommsQualityTmr = nullptr;
    QTimer* MemReqTimer = nullptr;
    QLabel* MemReqtb = nullptr;
    // Beside MemReqtb: the configuration shown came in a memory-contents message that no
    // read or write asked for (noise can form one). Shown until the next read or write.
    QLabel* UnrequestedReplylb = nullptr;
    QPushButton* ReadConfigcb = nullptr;
    QPushButton* WriteConfigcb = nullptr;
    QPushButton* LoadConfigcb = nullptr;
    QPushButton* SaveConfigcb = nullptr;
    std::array<QGroupBox*, 2> MotorConfigfr{};
    std::array<QGroupBox*, 2> MotorValuesfr{};
    std::map<ParamLabel, std::array<ClickLabel*, 2>> paramLabels;
    std::array<QCheckBox*, 2> Reversecb{};
    QGroupBox* DebugIDFr = nullptr;
    ClickLabel* DebIDtb = nullptr;
    ClickLabel* Voltagetb = nullptr;
    QLabel* Versiontb = nullptr;
    // Live values, per motor.
    std::array<QLabel*, 2> ElecAngletb{}, AxisRatetb{}, AxisErrortb{}, AxisPtb{}, AxisItb{}, AxisDtb{}, ExtGaintb{},
        AxisPowertb{}, AxisAngletb{};
    std::array<QPushButton*, 2> TestDrivecb{};
    std::array<QPushButton*, 2> Testcb{};
    std::array<QPushButton*, 2> TestOffcb{};
    ClickLabel* TestPtb = nullptr;
    ClickLabel* TestRatetb = nullptr;
    QPushButton* RestartIntoBLcb = nullptr;
    QTimer* TestTmr = nullptr;
    QLabel* Switchtb = nullptr;
    QGroupBox* ButtonFr = nullptr;
    std::array<QPushButton*, 3> Validitiescb{};
    std::array<QRadioButton*, 2> TgtSelcb{};
    QGroupBox* QVaneConnectFr = nullptr;
    std::array<QPushButton*, 3> KDXAxisSelcb{};
    QAction* mnuLoad = nullptr;
    QAction* mnuSave = nullptr;
    QAction* mnuExit = nullptr;
    QAction* mnuAbout = nullptr;
    QAction* mnuDebug = nullptr;

    ClickLabel* label(ParamLabel l, int motor) { return paramLabels.at(l)[static_cast<std::size_t>(motor)]; }

    // ---- checks on the configuration: change marks, Compare with File, round-trip warnings
    // File, Compare with File...: a backup file against the configuration on screen.
    void mnuCompare_Click();
    QAction* mnuCompare = nullptr;
    // The marks beside the values that differ from what the module last reported.
    ChangeMarkers& changeMarkers() { return *changeMarkers_; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildControls();
    QVBoxLayout* buildMotorColumn(int motor, QWidget* central);
    void buildTargetFrames(QVBoxLayout* shared, QWidget* central);
    QGroupBox* buildModuleFrame(QWidget* central);
    QGroupBox* buildTransferFrame(QWidget* central);
    QGroupBox* buildDebugFrame(QWidget* central);
    void buildMenus();
    void showWaitWindow();
    void RequestMemoryRead(bool flag);
    void RequestMemoryWrite();
    // After a memory-contents message has replaced the configuration: says so beside
    // MemReqtb when no read or write was waiting for it.
    void noteMemoryReply();
    void SetDataModified(bool flag);
    bool ConfirmReadOverChanges();
    // Loads a backup file, asking which motor where needed; true when it loaded.
    bool loadConfigFrom(const std::string& path);
    void ShowVersion(int major, int minor);
    void ShowQVaneAxis(int axis);
    void SetTargetIsQVane(bool value);
    void ShowLiveValues();
    void buildLiveDisplayTimer();
    void scheduleLiveValues();
    void showMotorOnePanels(bool visible);
    void afterCyclic();
    void buildLiveValues(int motor, QGroupBox* frame);
    QGroupBox* buildTestFrame(QWidget* parent);
    void UpdateTestButtons();
    void showTestValues();
    void followTestTmr();
    void setFormWidthTwips(int twips);

    void writeLogLine();
    LiveCaptions captions_;
    std::string logLine_;
    ChangedOnly<bool> shownSelectedValid_;
    std::array<ChangedOnly<bool>, 3> shownValid_;
    // Forwards the gain panel's accessors to the configuration.
    class ConfigGains : public GainStore {
    public:
        explicit ConfigGains(DriverConfig& c) : c_(c) {}
        float GetP(int m) const override { return c_.GetP(m); }
        float GetI(int m) const override { return c_.GetI(m); }
        float GetIA(int m) const override { return c_.GetIA(m); }
        float GetD(int m) const override { return c_.GetD(m); }
        float GetV1(int m) const override { return c_.GetV1(m); }
        float GetV2(int m) const override { return c_.GetV2(m); }
        float GetG(int m) const override { return c_.GetG(m); }
        void PutP(float v, int m) override { c_.PutP(v, m); }
        void PutI(float v, int m) override { c_.PutI(v, m); }
        void PutIA(float v, int m) override { c_.PutIA(v, m); }
        void PutD(float v, int m) override { c_.PutD(v, m); }
        void PutV1(float v, int m) override { c_.PutV1(v, m); }
        void PutV2(float v, int m) override { c_.PutV2(v, m); }
        void PutG(float v, int m) override { c_.PutG(v, m); }
        bool GetGainsHaveBeenLoaded() const override { return c_.GetGainsHaveBeenLoaded(); }
        bool GetDataModified() const override { return c_.GetDataModified(); }

    private:
        DriverConfig& c_;
    };

    Peers peers_;
    DriverConfig config_;
    ConfigGains gainStore_{config_};
    int shownMajor_ = -1, shownMinor_ = -1;
    int LastQVaneAxis = -1;
    bool quitting_ = false;
    bool memoryRequestPending_ = false; // a read or write waits for its answer
    TestMode testMode_;
    std::optional<bool> motorOneShown_;       // as the last direct message or target change left them
    std::unique_ptr<RefreshPacer> livePacer_; // paces the live-value labels
    bool liveStale_ = false;

    // ---- checks on the configuration (main_entry_checks.cpp)
    void buildChecks();
    // Asks before a file replaces the configuration; true for Yes.
    bool confirmLoad();
    // After an entry: says in the status bar when the value will not read back as entered.
    void warnRoundTrip(const EntryCommand& command, int motor, float value);
    std::unique_ptr<ChangeMarkers> changeMarkers_;
    QString roundTripWarning_; // the status bar's message while it is ours
};

} // namespace kdx
