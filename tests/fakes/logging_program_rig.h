#pragma once
// The program rig with the Tuning Display and the Data Logging window wired in as
// kdxtool wires them: the log's header follows the main window's target mode, the quit
// decision asks the tuning window, and a lost link is told to the tuning window.
#include "fakes/program_rig.h"
#include "telemetry/telemetry_setup_window.h"
#include "tuning/graph_win_window.h"

namespace kdx::test {

struct LoggingProgramRig : ProgramRig, LinkLossListener {
    GraphWin graph{ws};
    TelemetrySetup logging;

    // `seconds`: the log's monotonic clock (the real one when empty).
    explicit LoggingProgramRig(LogWriter::Clock seconds = {}) : logging(dialogs, std::move(seconds))
    {
        ws.graph = &graph;
        ws.logging = &logging;
        logging.setHeaderProvider([this] { return main.GetTelemetryFileTitles(); });
        logging.Form_Load();
        main.tuningDataModified = [this] { return graph.GetDataModified(); };
        comms.setLinkLossListener(this);
    }
    void PutCommsJustWentBad() override { graph.PutCommsJustWentBad(); }
};

} // namespace kdx::test
