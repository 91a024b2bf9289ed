#include "app/application.h"

#include "windows/about_window.h"

#include <QCoreApplication>
#include <QDir>

#include <cstdio>
#include <utility>

namespace kdx {

Application::Application(SerialPort& port, Dialogs& dialogs, KeyState& keys, LogWriter::Clock clock)
    : comms(port, dialogs),
      logging(dialogs, std::move(clock)),
      main(MainEntry::Peers{.dialogs = dialogs,
                            .keys = keys,
                            .link = comms,
                            .windows = *this,
                            .tuning = *this,
                            .log = logging,
                            .debug = debug}),
      graph(main.gainStore(), main, *this, main, dialogs, keys),
      wait(comms, main, main, keys),
      dialogs_(dialogs)
{
    comms.setMessageSink(&main);
    comms.setLinkLossListener(&graph);
    main.afterReveal = [this] { comms.keepInViewWhilePlaying(); }; // a recording playing keeps its controls at hand
    logging.setHeaderProvider([this] { return main.GetTelemetryFileTitles(); });
    debug.Form_Load();
    logging.Form_Load();
}

void Application::Form_Load()
{
    comms.Form_Load();
    main.Form_Load();
}

void Application::openCommandLineFile(const std::string& path)
{
    // The main window takes the file as the command line carries it: in double quotes.
    const bool quoted = path.size() >= 2 && path.front() == '"' && path.back() == '"';
    main.handleCommandLine(quoted ? path : '"' + path + '"');
}

StatusInputs Application::statusInputs() const
{
    return StatusInputs{.link = comms.linkStatus(),
                        .qvane = main.TargetIsQVane,
                        .qvaneAxis = main.shownQVaneAxis(),
                        .versionMajor = main.shownVersionMajor(),
                        .versionMinor = main.shownVersionMinor()};
}

QWidget* Application::window(ProgramWindow w)
{
    switch (w) {
    case ProgramWindow::Main: return &main;
    case ProgramWindow::Tuning: return &graph;
    case ProgramWindow::CommsLink: return &comms;
    case ProgramWindow::DataLogging: return &logging;
    case ProgramWindow::DebugDisplay: return &debug;
    case ProgramWindow::Wait: return &wait;
    case ProgramWindow::About: break;
    }
    return nullptr;
}

void Application::showWindow(ProgramWindow w)
{
    if (w == ProgramWindow::Wait) {
        // Centred over the main window, wherever that stands.
        wait.adjustSize();
        wait.move(main.geometry().center() - wait.rect().center());
        wait.startWaiting();
    } else if (w == ProgramWindow::About) {
        auto* about = new FrmAbout(main, dialogs_, &main); // the main window owns it until it closes
        about->setAttribute(Qt::WA_DeleteOnClose);
        about->Form_Load();
        about->open(); // modal to the main window, without a nested event loop
    } else {
        window(w)->show();
    }
}

void Application::hideWindow(ProgramWindow w)
{
    if (w == ProgramWindow::Wait)
        wait.stopWaiting();
    else if (QWidget* widget = window(w))
        widget->hide();
}

void Application::raiseWindow(ProgramWindow w)
{
    if (QWidget* widget = window(w)) widget->raise();
}

void Application::bringForward(ProgramWindow w)
{
    QWidget* widget = window(w);
    if (!widget || !widget->isVisible()) return;
    widget->raise();
    widget->activateWindow();
}

void Application::unloadAll()
{
    graph.unload();
    debug.unload();
    logging.unload();
    wait.unload();
    comms.unload();
    if (ended_) return;
    ended_ = true;
    if (onEnded) onEnded();
}

bool Application::saveScreenshots(const QString& dirPath)
{
    QDir dir;
    if (!dir.mkpath(dirPath)) {
        std::fprintf(stderr, "kdxtool: cannot create %s\n", qPrintable(dirPath));
        return false;
    }
    FrmAbout about(main, dialogs_, &main);
    const std::pair<QWidget*, const char*> windows[] = {
        {&main, "main"},    {&graph, "tuning"}, {&comms, "comms-link"}, {&logging, "data-logging"},
        {&debug, "debug-display"}, {&about, "about"},  {&wait, "wait"},
    };
    for (const auto& [w, _] : windows) w->show();
    QCoreApplication::processEvents(); // lay out and paint what was just shown
    bool ok = true;
    for (const auto& [w, name] : windows) {
        const QString path = QDir(dirPath).filePath(QString(name) + ".png");
        if (w->grab().save(path)) {
            std::printf("%s\n", qPrintable(path));
        } else {
            std::fprintf(stderr, "kdxtool: cannot write %s\n", qPrintable(path));
            ok = false;
        }
    }
    return ok;
}

} // namespace kdx
