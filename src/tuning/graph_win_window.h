#pragma once
// The "Tuning Display" window: a two-channel oscilloscope of one motor's axis rate and
// axis error, the trigger and scale controls, and the gain panel that sends tuned gains
// to the module every 40 ms. All logic lives in GraphWinModel; this class owns the
// controls, forwards their events to the model and paints the faces the model gives.
#include "core/atomic_file.h"
#include "link/message_sink.h"
#include "tuning/gain_set.h"
#include "tuning/graph_canvas.h"
#include "tuning/trace_capture.h"
#include "tuning/tuning_display.h"
#include "widgets/posted_box.h"

#include <QMainWindow>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

class QAction;
class QBoxLayout;
class QCheckBox;
class QGroupBox;
class QLabel;
class QPushButton;
class QTimer;

namespace kdx {

class ClickLabel;
class Dialogs;
class GainSender;
class GainStore;
class KeyState;
class ProgramWindows;
class QuitRequester;
class GraphView;
class GraphWinModel;
class GuidePanel;
class SweepPanel;

class GraphWin : public QMainWindow, public TuningDisplay, public LinkLossListener {
    Q_OBJECT
public:
    // `config` holds the stored gains the panel starts from and takes tuned ones back;
    // `drive` carries the gain message; `saver` writes the trace files. All must outlive
    // the window.
    GraphWin(GainStore& config, GainSender& drive, ProgramWindows& windows, QuitRequester& quit, Dialogs& dialogs,
             const KeyState& keys, const AtomicSaver& saver = PlainSaver, QWidget* parent = nullptr);
    ~GraphWin() override;

    // ---- operations of the main window ----
    // One telemetry sample of a motor (0 or 1): axis rate and axis error.
    void PutSample(int motor, float rate, float error) override;
    // Unticks "Enab" and stops the gain message; the flag is ignored, every call disables.
    void SetEnable(bool flag) override;
    // The link timed out: warns, once the watchdog's tick has returned, when modified gains
    // (here or in the main window) were in use.
    void PutCommsJustWentBad() override;
    // Tuned gains not yet written back to the main window's configuration.
    bool GetDataModified() const override;
    // Whether unsaved tuning changes may be dropped; asks the user when there are some.
    bool GoForUpdate();
    // Loads a tuning file named at start-up, without a dialog.
    void LoadTuningFileOnInit(const std::string& path) override;
    // The second motor button exists only for a module that drives two motors.
    void SetSecondMotorVisible(bool visible) override;
    // Fill colour of the input indicator: green valid, red invalid; painted on change only.
    void SetInputValid(bool valid) override;
    // Lets the window close for real (the program is ending).
    void unload();

    GraphWinModel& model() { return *model_; }

    // ---- handlers (public so tests and the timer call them directly) ----
    void RepeatTrigcb_Click();
    void NowTrigcb_Click();
    void StopTracecb_Click();
    // 0 .. 3: Trace5scb, Trace10scb, Trace30scb, Trace60scb.
    void TraceDurationcb_Click(int index);
    void DisplayClearcb_Click();
    void Enablecb_Click();
    void AutoScalecb_Click();
    void DefaultScalecb_Click();
    void FullWidthcb_Click();
    void ValueTb_Click(Gain which);
    // index 0 is the fine step, 1 the coarse one.
    void Inccb_Click(Gain which, int index);
    void Deccb_Click(Gain which, int index);
    void LockVcb_Click();
    void MemStorecb_Click(int slot);
    void MemReccb_Click(int slot);
    void Revertcb_Click();
    void SaveGaincb_Click();
    void MotorSelcb_Click(int index);
    // Opens the guided tuning panel.
    void Guidecb_Click();
    void SaveTracecb_Click();
    void LoadTracecb_Click();
    void mnuSaveTrace_Click() { SaveTracecb_Click(); }
    void mnuLoad_Click() { LoadTracecb_Click(); }
    void mnuExit_Click();
    void mnuClose_Click();
    // Sends the panel's gains for the selected motor through the main window.
    void GainMsgTmr_Timer();
    void Form_KeyDown(int keyCode);

    // ---- controls ----
    QGroupBox* Graphfr = nullptr;
    GraphView* Graphpb = nullptr;
    std::array<QLabel*, 9> Y1lb{};
    std::array<QLabel*, 9> Y2lb{};
    QLabel* AxisRatelb = nullptr;
    QLabel* AxisAnglelb = nullptr;
    QPushButton* FullWidthcb = nullptr;

    QGroupBox* Controlsfr = nullptr;
    QPushButton* RepeatTrigcb = nullptr;
    QPushButton* NowTrigcb = nullptr;
    QPushButton* StopTracecb = nullptr;
    QPushButton* Trace5scb = nullptr;
    QPushButton* Trace10scb = nullptr;
    QPushButton* Trace30scb = nullptr;
    QPushButton* Trace60scb = nullptr;
    std::array<QPushButton*, 4> TraceDurationcb{}; // the four above, shortest first
    QPushButton* DisplayClearcb = nullptr;
    QPushButton* AutoScalecb = nullptr;
    QPushButton* DefaultScalecb = nullptr;
    QLabel* InputValidInd = nullptr;

    QGroupBox* Gainfr = nullptr;
    QCheckBox* Enablecb = nullptr;
    ClickLabel* Ptb = nullptr;
    ClickLabel* Itb = nullptr;
    ClickLabel* IAtb = nullptr;
    ClickLabel* Dtb = nullptr;
    ClickLabel* V1tb = nullptr;
    ClickLabel* V2tb = nullptr;
    ClickLabel* Gtb = nullptr;
    std::array<QPushButton*, 2> PInccb{}, PDeccb{}, IInccb{}, IDeccb{}, IAInccb{}, IADeccb{}, DInccb{}, DDeccb{},
        V1Inccb{}, V1Deccb{}, V2Inccb{}, V2Deccb{}, GInccb{}, GDeccb{};
    QCheckBox* LockVcb = nullptr;
    QPushButton* Revertcb = nullptr;
    QPushButton* SaveGaincb = nullptr;
    QPushButton* Guidecb = nullptr;
    std::array<QPushButton*, 2> MotorSelcb{};

    QGroupBox* MemoryFr = nullptr;
    std::array<QLabel*, 4> MemIDlb{};
    std::array<QPushButton*, 4> MemStorecb{};
    std::array<QPushButton*, 4> MemReccb{};

    QGroupBox* TracesLoadSavefr = nullptr;
    QPushButton* SaveTracecb = nullptr;
    QPushButton* LoadTracecb = nullptr;

    // The latest sweep's numbers, the pinned reference and the exports, under the graph.
    SweepPanel* SweepPanelfr = nullptr;

    QTimer* GainMsgTmr = nullptr;
    QAction* mnuSaveTrace = nullptr;
    QAction* mnuLoad = nullptr;
    QAction* mnuExit = nullptr;
    QAction* mnuClose = nullptr;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildGraph(QWidget* central);
    void buildControls(QWidget* parent);
    void buildGainPanel(QWidget* parent);
    void buildMemoryAndFiles(QWidget* parent);
    void buildMenus();
    // Connects a control's signal to a handler run through the guard.
    template <typename Sender, typename Signal, typename Handler>
    void on(Sender* sender, Signal signal, Handler handler);
    // A push button whose click runs the handler through the guard, added to row if given.
    template <typename Handler>
    QPushButton* addButton(QWidget* parent, QBoxLayout* row, const QString& caption, const QString& name,
                           std::string_view tip, Handler handler);
    void placeAxisLabels(int axis, const AxisLabels& labels);
    void showCapture();
    void showGains();
    void showAll();

    GainStore& config_;
    GainSender& drive_;
    ProgramWindows& windows_;
    QuitRequester& quit_;
    std::unique_ptr<GraphWinModel> model_;
    bool unloading_ = false;
    std::optional<bool> shownInputValid_;
    CaptureFaces shownCapture_;             // the faces showCapture last painted
    std::array<QWidget*, 2> labelColumn_{}; // hold Y1lb left of the graph, Y2lb right of it
    PostedBox disconnectedBox_{this};       // raised by the link's watchdog timer
    std::unique_ptr<GuidePanel> guide_;
};

} // namespace kdx
