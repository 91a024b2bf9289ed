#pragma once
// The program's link and main window on the fakes, as the window tests start them:
// a fake port (opened by the scan), scripted dialogs, a Shift key, the Comms Link and
// the main window loaded, and the written bytes cleared.
#include "fakes/fake_serial_port.h"
#include "fakes/scripted_dialogs.h"
#include "link/comms_link_window.h"
#include "mainwindow/main_entry.h"

namespace kdx::test {

struct ProgramRig {
    FakeSerialPort port;
    ScriptedDialogs dialogs;
    FakeKeyState keys;
    Workspace ws;
    CommsLink comms{port, dialogs};
    MainEntry main{ws};

    ProgramRig()
    {
        ws.comms = &comms;
        ws.dialogs = &dialogs;
        ws.keys = &keys;
        ws.port = &port;
        ws.main = &main;
        comms.setMessageSink(&main);
        comms.Form_Load();
        main.Form_Load();
        port.written.clear();
    }
};

} // namespace kdx::test
