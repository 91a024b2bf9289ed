// The main window's checks on the configuration: the marks beside values changed since
// the module last reported, File, Compare with File, and the status-bar warning for an
// entered value the module will not give back as entered.
#include "config/config_file.h"
#include "config/entry_commands.h"
#include "config/round_trip.h"
#include "core/host_error.h"
#include "mainwindow/change_markers.h"
#include "mainwindow/compare_window.h"
#include "mainwindow/main_entry.h"
#include "platform/dialogs.h"
#include "platform/qt_guard.h"
#include "widgets/click_label.h"

#include <QAction>
#include <QCheckBox>
#include <QMenu>
#include <QMenuBar>
#include <QStatusBar>

namespace kdx {

namespace {

// Long enough to read a sentence, short enough not to linger over later work.
constexpr int kRoundTripWarningMs = 10000;

// Either kind of backup, whichever target is chosen.
constexpr std::string_view kCompareFilter =
    "Brushless Driver Backup Files|*.kdx;*.bls|Two-Axis Brushless Driver Files (*.kdx)|*.kdx|"
    "Single-Axis Brushless Driver Files (*.bls)|*.bls|All Files (*.*)|*.*";

} // namespace

void MainEntry::buildChecks()
{
    changeMarkers_ = std::make_unique<ChangeMarkers>([this](const ParamField& field, int m) -> QWidget* {
        if (&field == &kDebugIdField) return DebIDtb;
        if (field.reverse) return Reversecb[static_cast<std::size_t>(m)];
        return label(field.label, m);
    });

    // File, Compare with File..., just below Save.
    mnuCompare = new QAction("&Compare with File...", this);
    mnuCompare->setObjectName("mnuCompare");
    mnuCompare->setToolTip("Lists what differs between the configuration on screen and a backup file");
    connect(mnuCompare, &QAction::triggered, this,
            [this] { guarded("mnuCompare_Click", [&] { mnuCompare_Click(); }); });
    QMenu* file = menuBar()->findChild<QMenu*>("mnuFile");
    const QList<QAction*> actions = file->actions();
    const qsizetype afterSave = actions.indexOf(mnuSave) + 1;
    file->insertAction(afterSave < actions.size() ? actions[afterSave] : nullptr, mnuCompare);
}

void MainEntry::mnuCompare_Click()
{
    FileDialogRequest r;
    r.title = "Compare with File";
    r.filter = std::string(kCompareFilter);
    r.defaultExt = std::string(TargetIsQVane ? configfile::ExtQVane : configfile::ExtDirect);
    const auto path = peers_.dialogs.OpenFile(r);
    if (!path) return;
    const ConfigLoad load = loadConfigFile(*path, TargetIsQVane);
    if (load.status == ConfigLoadStatus::Failed) {
        peers_.dialogs.MsgBox(load.box.prompt, load.box.style, load.box.title);
        return;
    }
    ConfigSnapshot file;
    applyConfigLoad(load, file.image);
    file.twoAxis = load.twoAxis();
    auto* window = new CompareWindow(
        *path, file,
        [this] {
            return ConfigSnapshot{imageOnScreen(config_), !TargetIsQVane};
        },
        [this](const ParamField& field, int m) { return changeMarkers_->shownName(field, m); },
        [this](const std::string& p) { return confirmLoad() && loadConfigFrom(p); }, this);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->open(); // window-modal, and no event loop of its own
}

bool MainEntry::confirmLoad()
{
    return peers_.dialogs.MsgBox(std::string(configfile::ConfirmLoadPrompt), box::YesNo,
                                 std::string(configfile::ConfirmLoadTitle)) == Answer::Yes;
}

void MainEntry::warnRoundTrip(const EntryCommand& command, int motor, float value)
{
    RoundTrip check;
    try {
        check = checkRoundTrip(config_, command, motor, value);
    } catch (const HostError&) {
        return; // a value whose write would stop on a host error: Write says so when it happens
    }
    if (!check.accepted) return; // dropped: what was entered before still stands
    if (!check.warning.empty()) {
        roundTripWarning_ = QString::fromStdString(check.warning);
        statusBar()->showMessage(roundTripWarning_, kRoundTripWarningMs);
    } else if (!roundTripWarning_.isEmpty() && statusBar()->currentMessage() == roundTripWarning_) {
        statusBar()->clearMessage(); // an earlier warning no longer applies
    }
}

} // namespace kdx
