#include "app/application.h"

#include "widgets/compact_layout.h"
#include "windows/about_window.h"

#include <QAction>
#include <QCoreApplication>
#include <QKeySequence>
#include <QDir>

#include <cstdio>
#include <utility>

namespace kdx {

Application::Application(SerialPort& port, Dialogs& dialogs, KeyState& keys, Clock& clock)
    : clock(clock),
      comms(port, dialogs, clock),
      debug(clock),
      logging(dialogs, clock),
      main(MainEntry::Peers{.dialogs = dialogs,
                            .keys = keys,
                            .link = comms,
                            .windows = *this,
                            .tuning = *this,
                            .log = logging,
                            .debug = debug,
                            .saver = saver,
                            .clock = clock}),
      graph(main.gainStore(), main, *this, main, dialogs, keys, saver),
      wait(comms, main, main, keys, *this),
      dialogs_(dialogs)
{
    comms.setMessageSink(&main);
    comms.setLinkLossListener(this);
    main.afterReveal = [this] { comms.keepInViewWhilePlaying(); }; // a recording playing keeps its controls at hand
    logging.setHeaderProvider([this] { return main.GetTelemetryFileTitles(); });
    debug.Form_Load();
    logging.Form_Load();
    // File, Exit's Ctrl+Q, spelled out: the platform's standard quit key is not Ctrl+Q
    // under every theme, and a key that only the main window hears does nothing while
    // the wait window or another window has the focus.
    main.mnuExit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    main.mnuExit->setShortcutContext(Qt::ApplicationShortcut);
    for (QWidget* w : std::initializer_list<QWidget*>{&graph, &logging, &comms, &debug, &wait})
        w->addAction(main.mnuExit);
    // On a small screen the tuning window is cut down to the room beside the main window.
    allowScrolling(&graph);
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

void Application::PutCommsJustWentBad()
{
    graph.PutCommsJustWentBad();
    main.setLiveValuesStale(true);
    debug.setStale(true);
}

void Application::showPortChoice()
{
    placeOnFirstShow(&comms);
    comms.show();
    comms.raise();
    comms.activateWindow();
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
        if (!placed_.count(&main)) placeWorkingWindows(availableArea());
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
        placeOnFirstShow(window(w));
        window(w)->show();
    }
}

void Application::hideWindow(ProgramWindow w)
{
    if (w == ProgramWindow::Wait) wait.stopWaiting();
    else if (QWidget* widget = window(w)) widget->hide();
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
        {&main, "main"},           {&graph, "tuning"}, {&comms, "comms-link"}, {&logging, "data-logging"},
        {&debug, "debug-display"}, {&about, "about"},  {&wait, "wait"},
    };
    restoreWishedSizes(); // pictures at the design size, whatever the screen they were made on
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
