#pragma once
// The program's link and main window on the fakes, as the window tests start them:
// a fake port (opened by the scan), scripted dialogs, a Shift key, the Comms Link, the
// debug display and the main window loaded, the test timer's start-up tick taken, and
// the written bytes cleared.
#include "fakes/fake_serial_port.h"
#include "fakes/scripted_dialogs.h"
#include "link/comms_link_window.h"
#include "mainwindow/main_entry.h"
#include "windows/debug_display_window.h"

namespace kdx::test {

struct ProgramRig {
    FakeSerialPort port;
    ScriptedDialogs dialogs;
    FakeKeyState keys;
    Workspace ws;
    CommsLink comms{port, dialogs};
    DebugDisplay debug;
    MainEntry main{ws};

    ProgramRig()
    {
        ws.comms = &comms;
        ws.dialogs = &dialogs;
        ws.keys = &keys;
        ws.port = &port;
        ws.main = &main;
        ws.debug = &debug;
        comms.setMessageSink(&main);
        comms.Form_Load();
        main.Form_Load();
        main.TestTmr_Timer(); // the start-up tick (one idle test command) taken now, not at random
        port.written.clear();
    }
};

} // namespace kdx::test
