#pragma once
// The whole program, built by the application class exactly as kdxtool's main() builds
// it, on the fakes: a fake port (opened by the scan), scripted dialogs, a Shift key and
// a clock that moves only with advance(). Loaded as at start-up (the wait window up),
// then the wait window's probing timer stopped and the test timer's start-up tick taken,
// so that tests drive the timers themselves; the written bytes are cleared.
#include "app/application.h"
#include "fakes/fake_scheduler.h"
#include "fakes/fake_serial_port.h"
#include "fakes/manual_clock.h"
#include "fakes/scripted_dialogs.h"

#include <QTimer>

#include <functional>

namespace kdx::test {

struct ProgramRig {
    FakeSerialPort port;
    ScriptedDialogs dialogs;
    FakeKeyState keys;
    ManualClock clock;
    Application program{port, dialogs, keys, clock};
    CommsLink& comms = program.comms;
    MainEntry& main = program.main;
    PUPWait& wait = program.wait;
    DebugDisplay& debug = program.debug;
    TelemetrySetup& logging = program.logging;
    GraphWin& graph = program.graph;
    FakeScheduler timers{clock, {&comms, &debug, &logging, &main, &graph, &wait}};

    // `takeStartupTick` false leaves the test timer's first tick to the test;
    // `preparePort` sets the fake port up before the program scans it.
    explicit ProgramRig(bool takeStartupTick = true, const std::function<void(FakeSerialPort&)>& preparePort = {})
    {
        if (preparePort) preparePort(port);
        program.Form_Load();
        wait.InputSwitchTimer->stop();
        if (takeStartupTick) main.TestTmr_Timer(); // one idle test command, taken now, not at random
        port.written.clear();
    }
    // Simulated time goes on by `ms`; every running timer of the program fires when due.
    void advance(int64_t ms) { timers.advance(ms); }

    // The live-value labels catch up with the last message, as the display timer makes them.
    void flushDisplay() { main.flushLiveDisplay(); }
    // Delivers bytes and lets the display catch up.
    void deliverAndShow(const std::vector<uint8_t>& bytes)
    {
        port.deliver(bytes);
        flushDisplay();
    }
};

} // namespace kdx::test
