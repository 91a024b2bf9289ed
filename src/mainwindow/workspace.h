#pragma once
// Every window and adapter of the running program, built by the composition root.
// Windows call each other's public operations through it.
namespace kdx {

class CommsLink;
class Dialogs;
class KeyState;
class MainEntry;
class SerialPort;

struct Workspace {
    MainEntry* main = nullptr;
    CommsLink* comms = nullptr;
    Dialogs* dialogs = nullptr;
    KeyState* keys = nullptr;
    SerialPort* port = nullptr;
};

} // namespace kdx
