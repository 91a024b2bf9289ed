#pragma once
// The program as kdxtool wires it (Comms Link, main window, Tuning Display) on the Qt
// serial port, with scripted dialogs, selecting `device` by name as --port does.
#include "fakes/scripted_dialogs.h"
#include "link/comms_link_window.h"
#include "mainwindow/main_entry.h"
#include "platform/qt_serial_port.h"
#include "tuning/graph_win_window.h"

#include <QEventLoop>
#include <QTimer>

#include <functional>
#include <memory>
#include <string>

namespace kdx::test {

struct QtPortProgram {
    QtSerialPort port;
    ScriptedDialogs dialogs;
    FakeKeyState keys;
    Workspace ws;
    CommsLink comms{port, dialogs};
    MainEntry main{ws};
    std::unique_ptr<GraphWin> graph;

    explicit QtPortProgram(const std::string& device)
    {
        ws.comms = &comms;
        ws.dialogs = &dialogs;
        ws.keys = &keys;
        ws.port = &port;
        ws.main = &main;
        graph = std::make_unique<GraphWin>(ws);
        ws.graph = graph.get();
        comms.setMessageSink(&main);
        port.addExtraPort(device);
        comms.Form_Load();
        main.Form_Load();
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
