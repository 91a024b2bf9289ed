// kdxtool: the composition root. Builds the adapters and windows, wires them through
// the workspace, and starts the main window.
#include "link/comms_link_window.h"
#include "mainwindow/main_entry.h"
#include "mainwindow/workspace.h"
#include "platform/qt_dialogs.h"
#include "platform/qt_key_state.h"
#include "platform/qt_serial_port.h"

#include <QApplication>
#include <QCommandLineParser>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName("KDX Tool");
    QApplication::setApplicationVersion(QString("%1.%2.%3").arg(KDX_VERSION_MAJOR).arg(KDX_VERSION_MINOR).arg(KDX_VERSION_PATCH));

    QCommandLineParser parser;
    parser.setApplicationDescription("Configure, tune and monitor a KDX brushless motor driver.");
    parser.addHelpOption();
    parser.addVersionOption();
    QCommandLineOption portOption("port", "Add PATH to the port list and select it, e.g. --port /dev/ttyUSB0.", "PATH");
    parser.addOption(portOption);
    parser.addPositionalArgument("FILE", "A configuration (.kdx) or tuning (.btf) file to open.");
    parser.process(app);

    kdx::QtSerialPort port;
    const QString portPath = parser.value(portOption);
    if (!portPath.isEmpty()) port.addExtraPort(portPath.toStdString());
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

    comms.Form_Load();
    if (!portPath.isEmpty()) comms.selectPortByName(portPath.toStdString());
    mainWindow.Form_Load();
    mainWindow.show();
    comms.show();
    const int rc = app.exec();
    comms.unload();
    return rc;
}
