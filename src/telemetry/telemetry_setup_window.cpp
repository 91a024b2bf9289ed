#include "telemetry/telemetry_setup_window.h"

#include "core/colour.h"
#include "platform/dialogs.h"
#include "platform/qt_guard.h"
#include "platform/qt_local_path.h"
#include "platform/qt_window_close.h"
#include "telemetry/log_file_name.h"
#include "telemetry/log_line.h"
#include "widgets/face_colour.h"
#include "widgets/text.h"

#include <QAction>
#include <QCloseEvent>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace kdx {

namespace {

QPushButton* button(const char* name, const char* caption, QWidget* parent)
{
    auto* b = new QPushButton(caption, parent);
    b->setObjectName(name);
    return b;
}

} // namespace

TelemetrySetup::TelemetrySetup(Dialogs& dialogs, Clock& clock, QWidget* parent)
    : QMainWindow(parent, Qt::Window),
      dialogs_(dialogs),
      log_(clock),
      header_([] { return telemetryFileTitles(false); })
{
    setObjectName("TelemetrySetup");
    setWindowTitle("Data Logging");
    build();
    LogFileName->setText(QString::fromStdString(localPath(logname::DefaultCaption)));
    dialogFileName_ = localPath(logname::DialogFileName);
    showState();
}

TelemetrySetup::~TelemetrySetup() = default; // an open log is written out and closed

void TelemetrySetup::build()
{
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);

    LogControl = new QGroupBox("Log Control", central);
    LogControl->setObjectName("LogControl");
    auto* controlRow = new QHBoxLayout(LogControl);
    StartLog = button("StartLog", "Start", LogControl);
    PauseLog = button("PauseLog", "Pause", LogControl);
    StopLog = button("StopLog", "Stop", LogControl);
    LogEvents = new QLabel(LogControl);
    LogEvents->setObjectName("LogEvents");
    LogEvents->setMinimumWidth(LogEvents->fontMetrics().horizontalAdvance(" 0000000000"));
    LogEvents->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    for (QWidget* w : {static_cast<QWidget*>(StartLog), static_cast<QWidget*>(PauseLog), static_cast<QWidget*>(StopLog),
                       static_cast<QWidget*>(LogEvents)})
        controlRow->addWidget(w);
    layout->addWidget(LogControl);

    LogFileDetails = new QGroupBox("Log File", central);
    LogFileDetails->setObjectName("LogFileDetails");
    auto* fileLayout = new QVBoxLayout(LogFileDetails);
    LogFileName = new QLabel(LogFileDetails);
    LogFileName->setObjectName("LogFileName");
    LogFileName->setTextInteractionFlags(Qt::TextSelectableByMouse);
    fileLayout->addWidget(LogFileName);
    auto* fileRow = new QHBoxLayout();
    NextLogFile = button("NextLogFile", "Next", LogFileDetails);
    ChangeLogFile = button("ChangeLogFile", "Change", LogFileDetails);
    fileRow->addWidget(NextLogFile);
    fileRow->addWidget(ChangeLogFile);
    fileRow->addStretch(1);
    fileLayout->addLayout(fileRow);
    layout->addWidget(LogFileDetails);
    layout->addStretch(1);
    setCentralWidget(central);

    mnuFile = menuBar()->addMenu("&File");
    mnuFile->setObjectName("mnuFile");
    mnuClose = mnuFile->addAction("&Close");
    mnuClose->setObjectName("mnuClose");

    FlushTimer = new QTimer(this);
    FlushTimer->setObjectName("FlushTimer");
    FlushTimer->setInterval(FlushTimerInterval);

    connect(StartLog, &QPushButton::clicked, this, [this] { guarded("StartLog_Click", [&] { StartLog_Click(); }); });
    connect(PauseLog, &QPushButton::clicked, this, [this] { guarded("PauseLog_Click", [&] { PauseLog_Click(); }); });
    connect(StopLog, &QPushButton::clicked, this, [this] { guarded("StopLog_Click", [&] { StopLog_Click(); }); });
    connect(NextLogFile, &QPushButton::clicked, this,
            [this] { guarded("NextLogFile_Click", [&] { NextLogFile_Click(); }); });
    connect(ChangeLogFile, &QPushButton::clicked, this,
            [this] { guarded("ChangeLogFile_Click", [&] { ChangeLogFile_Click(); }); });
    connect(mnuClose, &QAction::triggered, this, [this] { guarded("mnuClose_Click", [&] { mnuClose_Click(); }); });
    connect(FlushTimer, &QTimer::timeout, this, [this] { guarded("FlushTimer_Timer", [&] { FlushTimer_Timer(); }); });
}

void TelemetrySetup::Form_Load()
{
    LastNameChar = std::string(logname::InitialLastNameChar);
    NextLogFile_Click();
}

void TelemetrySetup::setHeaderProvider(std::function<std::string()> provider)
{
    header_ = provider ? std::move(provider) : [] { return telemetryFileTitles(false); };
}

std::string TelemetrySetup::logFileName() const { return LogFileName->text().toStdString(); }

void TelemetrySetup::PutStringToLog(const std::string& line)
{
    switch (log_.PutStringToLog(line)) {
    case LogWriter::PutResult::NotWritten:
    case LogWriter::PutResult::Written: return;
    case LogWriter::PutResult::CountChanged: showLogEvents(); return;
    case LogWriter::PutResult::WriteFailed: writeFailed(); return;
    }
}

void TelemetrySetup::StartLog_Click()
{
    const bool wasLogging = log_.GetLoggingDataToFile();
    // Asked only when a new file is opened: the header follows the mode of that moment.
    const std::string header = wasLogging ? std::string() : header_();
    if (const auto error = log_.Start(logFileName(), header)) {
        showState();
        dialogs_.MsgBox(*error, box::Critical, std::string(LogWriter::OpenErrorTitle));
        return;
    }
    if (!wasLogging) {
        showLogEvents();
        FlushTimer->start();
    }
    showState();
}

void TelemetrySetup::PauseLog_Click()
{
    const bool ok = log_.Pause();
    showState();
    if (!ok) writeFailed();
}

void TelemetrySetup::StopLog_Click()
{
    if (!log_.GetLoggingDataToFile()) return;
    const bool ok = log_.Stop();
    FlushTimer->stop();
    showState();
    NextLogFile_Click();
    if (!ok) dialogs_.MsgBox(log_.writeError(), box::Critical, std::string(LogWriter::WriteErrorTitle));
}

void TelemetrySetup::NextLogFile_Click()
{
    if (log_.GetLoggingDataToFile()) return; // the open log keeps its name
    std::string caption = logFileName();
    if (!NextLogFileName(caption, LastNameChar)) return;
    LogFileName->setText(QString::fromStdString(caption));
    dialogFileName_ = caption;
}

void TelemetrySetup::ChangeLogFile_Click()
{
    FileDialogRequest request;
    request.title = std::string(logname::DialogTitle);
    request.fileName = dialogFileName_;
    request.initialDir = localPath(logname::DialogFolder);
    const auto chosen = dialogs_.SaveFile(request);
    if (!chosen || chosen->empty()) return; // cancelled: the name stays
    dialogFileName_ = *chosen;
    LogFileName->setText(QString::fromStdString(ChangedLogFileName(*chosen)));
}

void TelemetrySetup::mnuClose_Click() { hide(); }

void TelemetrySetup::FlushTimer_Timer()
{
    if (!log_.flushIfDue()) writeFailed();
}

void TelemetrySetup::writeFailed()
{
    FlushTimer->stop();
    showState();
    NextLogFile_Click();
    writeFailedBox_.post([this, error = log_.writeError()] {
        dialogs_.MsgBox(error, box::Critical, std::string(LogWriter::WriteErrorTitle));
    });
}

void TelemetrySetup::showLogEvents() { showText(LogEvents, log_.LogEvents()); }

void TelemetrySetup::showState()
{
    const bool logging = log_.GetLoggingDataToFile();
    const bool paused = logging && log_.paused();
    paintFace(StartLog, logging && !paused ? colours::Green : colours::LightGrey);
    paintFace(PauseLog, paused ? colours::Green : colours::LightGrey);
    paintFace(StopLog, colours::LightGrey);
    NextLogFile->setEnabled(!logging);
}

void TelemetrySetup::unload()
{
    unloading_ = true;
    StopLog_Click();
    close();
}

void TelemetrySetup::closeEvent(QCloseEvent* event)
{
    closeUnlessUnloading(event, unloading_, [this] { mnuClose_Click(); }); // a running log keeps running
}

} // namespace kdx

#include "moc_telemetry_setup_window.cpp"
