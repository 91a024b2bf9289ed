#pragma once
// Every window and adapter of the running program, built by the composition root.
// Windows call each other's public operations through it.
namespace kdx {

class CommsLink;
class DebugDisplay;
class Dialogs;
class GraphWin;
class KeyState;
class MainEntry;
class PUPWait;
class SerialPort;
class TelemetrySetup;

struct Workspace {
    MainEntry* main = nullptr;
    CommsLink* comms = nullptr;
    GraphWin* graph = nullptr;         // the Tuning Display
    TelemetrySetup* logging = nullptr; // the Data Logging window
    PUPWait* wait = nullptr;           // the power-up wait window
    DebugDisplay* debug = nullptr;
    Dialogs* dialogs = nullptr;
    KeyState* keys = nullptr;
    SerialPort* port = nullptr;
};

} // namespace kdx
