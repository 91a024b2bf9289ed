#pragma once
// The whole program: every window, built once and wired to the others and to the
// adapters it is given. kdxtool's main() runs one on the real serial port, dialogs and
// keyboard; the window tests, the soak run and the benchmarks run the same one on fakes,
// so the program is wired in this one place. The windows know one another only through
// the narrow interfaces they take; this class answers the ones about windows as such
// (shown, hidden, the end of the program).
#include "link/comms_link_window.h"
#include "mainwindow/main_entry.h"
#include "platform/program_windows.h"
#include "telemetry/log_writer.h"
#include "telemetry/telemetry_setup_window.h"
#include "tuning/graph_win_window.h"
#include "tuning/tuning_display.h"
#include "windows/debug_display_window.h"
#include "widgets/link_status_bar.h"
#include "windows/pup_wait.h"

#include <QString>

#include <functional>
#include <string>

namespace kdx {

class Dialogs;
class KeyState;
class SerialPort;

class Application : private ProgramWindows, private TuningDisplay {
public:
    // The adapters are referenced and must outlive the application. `clock` times the
    // telemetry log's flushes (empty: the system's monotonic clock).
    Application(SerialPort& port, Dialogs& dialogs, KeyState& keys, LogWriter::Clock clock = {});
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

    // Whether the program has decided to end and unloaded its windows.
    bool Ended() const { return ended_; }
    // Runs once, when the program ends (kdxtool leaves its event loop).
    std::function<void()> onEnded;

    // The windows, each built on the ones declared before it and on this class.
    CommsLink comms;
    DebugDisplay debug;
    TelemetrySetup logging;
    MainEntry main;
    GraphWin graph;
    PUPWait wait;
    // The main window's status bar, on the link's state and the target the telemetry told.
    LinkStatusBar statusBar{main.statusBar(), [this] { return statusInputs(); },
                            [this] { return comms.receiver().goodMessages; }};

private:
    QWidget* window(ProgramWindow w);
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

    Dialogs& dialogs_;
    bool ended_ = false;
};

} // namespace kdx
