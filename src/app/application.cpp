#include "app/application.h"

namespace kdx {

Application::Application(SerialPort& port, Dialogs& dialogs, KeyState& keys, LogWriter::Clock clock)
    : ws{.main = &main,
         .comms = &comms,
         .graph = &graph,
         .logging = &logging,
         .wait = &wait,
         .debug = &debug,
         .dialogs = &dialogs,
         .keys = &keys,
         .port = &port},
      comms(port, dialogs), main(ws), wait(ws), logging(dialogs, std::move(clock)), graph(ws)
{
    comms.setMessageSink(&main);
    comms.setLinkLossListener(this);
    main.tuningDataModified = [this] { return graph.GetDataModified(); };
    main.unloadAll = [this] { unloadAll(); };
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

} // namespace kdx
