#pragma once
// The whole program: every window, built once and wired to the others and to the
// adapters it is given. kdxtool's main() runs one on the real serial port, dialogs and
// keyboard; the window tests, the soak run and the benchmarks run the same one on fakes,
// so the program is wired in this one place.
#include "link/comms_link_window.h"
#include "link/message_sink.h"
#include "mainwindow/main_entry.h"
#include "mainwindow/workspace.h"
#include "telemetry/log_writer.h"
#include "telemetry/telemetry_setup_window.h"
#include "tuning/graph_win_window.h"
#include "windows/debug_display_window.h"
#include "windows/pup_wait.h"

#include <functional>

namespace kdx {

class Dialogs;
class KeyState;
class SerialPort;

class Application : private LinkLossListener {
public:
    // The adapters are referenced and must outlive the application. `clock` times the
    // telemetry log's flushes (empty: the system's monotonic clock).
    Application(SerialPort& port, Dialogs& dialogs, KeyState& keys, LogWriter::Clock clock = {});
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    // Start-up: the Comms Link scans the ports and opens one; then the main window loads,
    // which puts up the wait window until a module is heard.
    void Form_Load();

    // Whether the program has decided to end and unloaded its windows.
    bool Ended() const { return ended_; }
    // Runs once, when the program ends (kdxtool leaves its event loop).
    std::function<void()> onEnded;

    // Declared before the windows, which keep a reference to it; it names them all.
    Workspace ws;
    CommsLink comms;
    MainEntry main;
    PUPWait wait;
    DebugDisplay debug;
    TelemetrySetup logging;
    GraphWin graph;

private:
    void PutCommsJustWentBad() override { graph.PutCommsJustWentBad(); }
    // Stops the log (closing its file), closes the port, and lets every window go.
    void unloadAll();

    bool ended_ = false;
};

} // namespace kdx
