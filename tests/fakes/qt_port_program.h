#pragma once
// The whole program, built by the application class, on the Qt serial port, with
// scripted dialogs, selecting `device` by name as --port does.
#include "app/application.h"
#include "fakes/scripted_dialogs.h"
#include "platform/qt_serial_port.h"

#include <QEventLoop>
#include <QTimer>

#include <functional>
#include <string>

namespace kdx::test {

struct QtPortProgram {
    QtSerialPort port;
    ScriptedDialogs dialogs;
    FakeKeyState keys;
    Application program{port, dialogs, keys};
    CommsLink& comms = program.comms;
    MainEntry& main = program.main;

    explicit QtPortProgram(const std::string& device)
    {
        port.addExtraPort(device);
        program.Form_Load();
        program.wait.InputSwitchTimer->stop(); // the line under test stays as selected
        comms.selectPortByName(device);
    }
};

// Runs the event loop for up to `ms`, or until `done` holds.
inline void pumpEvents(int ms, const std::function<bool()>& done = {})
{
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    QTimer poll;
    if (done) {
        QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
            if (done()) loop.quit();
        });
        poll.start(5);
    }
    loop.exec();
}

} // namespace kdx::test
