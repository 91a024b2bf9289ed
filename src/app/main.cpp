// kdxtool: the composition root. Builds the adapters and windows, wires them through
// the workspace, and starts the main window.
#include "link/comms_link_window.h"
#include "mainwindow/main_entry.h"
#include "mainwindow/workspace.h"
#include "platform/qt_dialogs.h"
#include "platform/qt_key_state.h"
#include "platform/qt_serial_port.h"
#include "sim/qt_sim_port.h"
#include "windows/debug_display_window.h"
#include "windows/pup_wait.h"
#include "windows/velmor_logo.h"
#include "telemetry/telemetry_setup_window.h"
#include "tuning/graph_win_window.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName("KDX Tool");
    QApplication::setWindowIcon(kdx::kdxToolIcon());
    QApplication::setApplicationVersion(QString("%1.%2.%3").arg(KDX_VERSION_MAJOR).arg(KDX_VERSION_MINOR).arg(KDX_VERSION_PATCH));

    QCommandLineParser parser;
    parser.setApplicationDescription("Configure, tune and monitor a KDX brushless motor driver.");
    parser.addHelpOption();
    parser.addVersionOption();
    QCommandLineOption portOption("port", "Add PATH to the port list and select it, e.g. --port /dev/ttyUSB0.", "PATH");
    parser.addOption(portOption);
    QCommandLineOption simulateOption(
        "simulate", "Connect to the built-in simulated module: a KDX, or with =qvane a Q-Vane with three KDX axes.",
        "qvane");
    parser.addOption(simulateOption);
    parser.addPositionalArgument("FILE", "A configuration (.kdx) or tuning (.btf) file to open.");
    // --simulate takes an optional value; Qt's parser wants one, so a bare flag is
    // rewritten before parsing.
    QStringList args = app.arguments();
    for (QString& a : args)
        if (a == "--simulate" || a == "-simulate") a = "--simulate=kdx";
    parser.process(args);
    const QString simulate = parser.value(simulateOption);
    if (!simulate.isEmpty() && simulate != "kdx" && simulate != "qvane") {
        std::fprintf(stderr, "kdxtool: --simulate takes no value or =qvane\n");
        return 2;
    }

    kdx::QtSerialPort realPort;
    const QString portPath = parser.value(portOption);
    if (!portPath.isEmpty()) realPort.addExtraPort(portPath.toStdString());
    // The simulated module is listed beside the real ports and selected like one.
    kdx::QtSimPort port(&realPort);
    kdx::QtDialogs dialogs;
    kdx::QtKeyState keys;

    kdx::Workspace ws;
    ws.port = &port;
    ws.dialogs = &dialogs;
    ws.keys = &keys;
    kdx::CommsLink comms(port, dialogs);
    ws.comms = &comms;
    kdx::MainEntry mainWindow(ws);
    ws.main = &mainWindow;
    comms.setMessageSink(&mainWindow);
    dialogs.setParent(&mainWindow);

    kdx::PUPWait wait(ws);
    ws.wait = &wait;
    kdx::DebugDisplay debug;
    ws.debug = &debug;
    debug.Form_Load();
    kdx::TelemetrySetup logging(dialogs);
    ws.logging = &logging;
    logging.setHeaderProvider([&] { return mainWindow.GetTelemetryFileTitles(); });
    logging.Form_Load();
    kdx::GraphWin graph(ws);
    ws.graph = &graph;
    mainWindow.tuningDataModified = [&] { return graph.GetDataModified(); };
    // The link's watchdog tells the tuning window when telemetry stops.
    struct GraphLinkLoss : kdx::LinkLossListener {
        kdx::GraphWin& g;
        explicit GraphLinkLoss(kdx::GraphWin& w) : g(w) {}
        void PutCommsJustWentBad() override { g.PutCommsJustWentBad(); }
    } linkLoss(graph);
    comms.setLinkLossListener(&linkLoss);
    mainWindow.unloadAll = [&] {
        graph.unload();
        debug.unload();
        logging.unload();
        wait.unload();
        comms.unload();
    };

    comms.Form_Load();
    if (!simulate.isEmpty())
        comms.selectPortByName(simulate == "qvane" ? kdx::QtSimPort::QVaneName : kdx::QtSimPort::KdxName);
    else if (!portPath.isEmpty())
        comms.selectPortByName(portPath.toStdString());
    mainWindow.Form_Load();
    // The working windows stay hidden until a module is heard (or Shift+click on the logo).
    wait.show();
    wait.InputSwitchTimer->start();
    const QStringList files = parser.positionalArguments();
    if (!files.isEmpty()) {
        QString path = files.first();
        if (!(path.startsWith('"') && path.endsWith('"') && path.size() >= 2)) path = '"' + path + '"';
        mainWindow.handleCommandLine(path.toStdString());
    }
    const int rc = app.exec();
    comms.unload();
    return rc;
}
