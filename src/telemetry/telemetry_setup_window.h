#pragma once
// The "Data Logging" window: starts, pauses and stops the telemetry log, numbers its
// file names and shows how many lines went in. The file itself is a LogWriter; this
// window owns the controls, the name and the boxes.
#include "telemetry/log_writer.h"
#include "telemetry/telemetry_log.h"
#include "widgets/posted_box.h"

#include <QMainWindow>

#include <functional>
#include <string>

class QAction;
class QGroupBox;
class QLabel;
class QMenu;
class QPushButton;
class QTimer;

namespace kdx {

class Dialogs;

class TelemetrySetup : public QMainWindow, public TelemetryLog {
    Q_OBJECT
public:
    // How often buffered lines are checked for their age; with the writer's half-second
    // limit a line is on the disk within a second even when telemetry stops coming.
    static constexpr int FlushTimerInterval = 250; // ms

    // `clock` times the writer's flushes; it must outlive the window.
    explicit TelemetrySetup(Dialogs& dialogs, Clock& clock = systemClock(), QWidget* parent = nullptr);
    ~TelemetrySetup() override;

    // Window load: LastNameChar "0", then Next, so the name shown is Run1.csv in the
    // default log folder.
    void Form_Load();

    // True while a log file is open (paused or not).
    bool GetLoggingDataToFile() const override { return log_.GetLoggingDataToFile(); }
    // One prepared line, CR LF included; dropped unless logging and not paused. Called
    // once per telemetry message, so it only touches a label every tenth line.
    void PutStringToLog(const std::string& line) override;
    // The header line written at Start (the main window's GetTelemetryFileTitles).
    // Until one is set, the direct-mode titles are written.
    void setHeaderProvider(std::function<std::string()> provider);

    // Handlers.
    void StartLog_Click();
    void PauseLog_Click();
    void StopLog_Click();
    void NextLogFile_Click();
    void ChangeLogFile_Click();
    void mnuClose_Click();
    void FlushTimer_Timer();

    // Stops the log (its lines are written out and the file closed) and lets the
    // window close for real: the program is ending.
    void unload();

    const LogWriter& log() const { return log_; }
    // The path the next Start writes to: the caption of LogFileName.
    std::string logFileName() const;

    // The character before the "." of the file name, as last advanced.
    std::string LastNameChar = "0";

    // Controls.
    QGroupBox* LogControl = nullptr;
    QPushButton* StartLog = nullptr;
    QPushButton* PauseLog = nullptr;
    QPushButton* StopLog = nullptr;
    QLabel* LogEvents = nullptr;
    QGroupBox* LogFileDetails = nullptr;
    QLabel* LogFileName = nullptr;
    QPushButton* NextLogFile = nullptr;
    QPushButton* ChangeLogFile = nullptr;
    QMenu* mnuFile = nullptr;
    QAction* mnuClose = nullptr;
    QTimer* FlushTimer = nullptr;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void build();
    void showLogEvents();
    void showState();
    // A failed write has stopped the log: said once, and the next log gets a new name.
    void writeFailed();

    Dialogs& dialogs_;
    LogWriter log_;
    std::function<std::string()> header_;
    std::string dialogFileName_; // the file dialog's file name, kept as the dialog keeps it
    bool unloading_ = false;
    PostedBox writeFailedBox_{this}; // raised by a telemetry line or the flush timer
};

} // namespace kdx
