#pragma once
// The whole program: every window, built once and wired to the others and to the
// adapters it is given. kdxtool's main() runs one on the real serial port, dialogs and
// keyboard; the window tests, the soak run and the benchmarks run the same one on fakes,
// so the program is wired in this one place. The windows know one another only through
// the narrow interfaces they take; this class answers the ones about windows as such
// (shown, hidden, the end of the program).
#include "link/comms_link_window.h"
#include "link/port_status.h"
#include "mainwindow/main_entry.h"
#include "platform/program_windows.h"
#include "platform/window_placement.h"
#include "telemetry/log_writer.h"
#include "telemetry/telemetry_setup_window.h"
#include "tuning/graph_win_window.h"
#include "tuning/tuning_display.h"
#include "windows/debug_display_window.h"
#include "widgets/link_status_bar.h"
#include "windows/pup_wait.h"

#include <QRect>
#include <QString>

#include <functional>
#include <map>
#include <set>
#include <string>

namespace kdx {

class Dialogs;
class KeyState;
class SerialPort;

class Application : private ProgramWindows, private TuningDisplay, private LinkLossListener, private PortStatus {
public:
    // The adapters are referenced and must outlive the application. `clock` times the
    // telemetry log's flushes and the playback's pace.
    Application(SerialPort& port, Dialogs& dialogs, KeyState& keys, Clock& clock = systemClock());
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    // Start-up: the Comms Link scans the ports and opens one; then the main window loads,
    // which puts up the wait window until a module is heard.
    void Form_Load();
    // The file named on kdxtool's command line, as typed (quotes optional).
    void openCommandLineFile(const std::string& path);
    // Saves each window as DIR/NAME.png, the hidden ones shown for it; prints each path
    // written. False if the folder or a picture could not be written.
    bool saveScreenshots(const QString& dirPath);

    // Places the main, Data Logging and tuning windows inside `area` (screen pixels),
    // clear of one another, cutting the later ones down where the area is short of room.
    // Done once on the screen's available area before the wait window first shows.
    void placeWorkingWindows(const QRect& area);

    // Whether the program has decided to end and unloaded its windows.
    bool Ended() const { return ended_; }
    // Runs once, when the program ends (kdxtool leaves its event loop).
    std::function<void()> onEnded;

    // The clock every window and the status bar read.
    Clock& clock;
    // What the windows save files with: a test sets its fault to make saves fail.
    AtomicSaver saver;
    // The windows, each built on the ones declared before it and on this class.
    CommsLink comms;
    DebugDisplay debug;
    TelemetrySetup logging;
    MainEntry main;
    GraphWin graph;
    PUPWait wait;
    // The main window's status bar, on the link's state and the target the telemetry told.
    LinkStatusBar statusBar{main.statusBar(), [this] { return statusInputs(); },
                            [this] { return comms.receiver().goodMessages; }, clock};

private:
    QWidget* window(ProgramWindow w);
    QRect availableArea() const;
    // A window's first appearance: inside the screen, beside the windows up, where room is.
    void placeOnFirstShow(QWidget* w);
    // The working windows at the sizes they asked for, before any cut (the pictures).
    void restoreWishedSizes();
    StatusInputs statusInputs() const;
    // ProgramWindows.
    void showWindow(ProgramWindow w) override;
    void hideWindow(ProgramWindow w) override;
    void raiseWindow(ProgramWindow w) override;
    void bringForward(ProgramWindow w) override;
    void unloadAll() override;
    // TuningDisplay, for the main window, which is built before the tuning window.
    void PutSample(int motor, float rate, float error) override { graph.PutSample(motor, rate, error); }
    void SetEnable(bool flag) override { graph.SetEnable(flag); }
    void SetSecondMotorVisible(bool visible) override { graph.SetSecondMotorVisible(visible); }
    void SetInputValid(bool valid) override { graph.SetInputValid(valid); }
    void LoadTuningFileOnInit(const std::string& path) override { graph.LoadTuningFileOnInit(path); }
    bool GetDataModified() const override { return graph.GetDataModified(); }

    // LinkLossListener: the tuning window hears of the loss, and every live value goes grey.
    void PutCommsJustWentBad() override;
    // PortStatus, for the wait window.
    std::string listeningPort() const override { return comms.currentPortName(); }
    std::string portProblem() const override { return comms.openProblem(); }
    void showPortChoice() override;

    Dialogs& dialogs_;
    bool ended_ = false;
    std::set<const QWidget*> placed_;             // windows that have had their first place
    std::map<const QWidget*, WindowSize> wishes_; // the working windows' sizes before any cut
};

} // namespace kdx
