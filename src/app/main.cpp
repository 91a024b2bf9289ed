// kdxtool: builds the real adapters, hands them to the application (every window,
// wired), and runs the event loop.
#include "app/application.h"
#include "core/terminate_report.h"
#include "platform/qt_dialogs.h"
#include "platform/qt_guard.h"
#include "platform/qt_key_state.h"
#include "platform/qt_serial_port.h"
#include "sim/qt_sim_port.h"
#include "tuning/graph_win_model.h"
#include "tuning/sweep_panel_window.h"
#include "windows/velmor_logo.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <string_view>

namespace {

// How long the simulated module runs before the screenshot run starts tuning: enough
// for the configuration read.
constexpr int kScreenshotTuneMs = 2000;
// The tuning window's picture pins a sweep at a P lowered by this many coarse steps
// as the reference; the run ends when a sweep at the restored P has closed, or after
// the limit.
constexpr int kScreenshotPSteps = 7;
constexpr int kScreenshotLimitMs = 30000;

struct Options {
    QString portPath;      // --port
    QString simulate;      // "kdx", "qvane" or empty
    QString screenshotDir; // --screenshot
    QStringList files;     // the positional FILE, if any
};

// Parses kdxtool's command line; --help and --version print and exit in here. Empty on
// a usage error, which has been reported.
std::optional<Options> parseOptions(bool textOnly)
{
    QCommandLineParser parser;
    parser.setApplicationDescription("Configure, tune and monitor a KDX brushless motor driver.\n\n"
                                     "Examples:\n"
                                     "  kdxtool --simulate                      try it on the simulated KDX\n"
                                     "  kdxtool --port /dev/ttyUSB0 gimbal.kdx  open a port, load a backup");
    parser.addHelpOption();
    parser.addVersionOption();
    QCommandLineOption portOption(
        "port",
        "Select the serial port PATH (added to the port list if a scan does not find it), e.g. --port /dev/ttyUSB0.",
        "PATH");
    parser.addOption(portOption);
    QCommandLineOption simulateOption(
        "simulate",
        "Connect to the built-in simulated module instead of a serial port: --simulate alone a KDX, "
        "--simulate=qvane a Q-Vane with three KDX axes.",
        "qvane");
    parser.addOption(simulateOption);
    QCommandLineOption screenshotOption(
        "screenshot",
        "Run against the simulated module (unless --port or --simulate says otherwise) for a few seconds, save a "
        "picture of each window as DIR/NAME.png and exit, e.g. --screenshot pictures.",
        "DIR");
    parser.addOption(screenshotOption);
    parser.addPositionalArgument(
        "FILE", "A configuration backup (.kdx) to load, or a tuning file (.btf) for the tuning window.", "[FILE]");
    // --simulate takes an optional value; Qt's parser wants one, so a bare flag is
    // rewritten before parsing.
    QStringList args = QCoreApplication::arguments();
    for (QString& a : args)
        if (a == "--simulate" || a == "-simulate") a = "--simulate=kdx";
    parser.process(args);
    if (textOnly) parser.showHelp(0); // "-h" and the like taken as an option's value
    Options o;
    o.portPath = parser.value(portOption);
    o.screenshotDir = parser.value(screenshotOption);
    o.simulate = parser.value(simulateOption);
    o.files = parser.positionalArguments();
    if (!o.screenshotDir.isEmpty() && o.simulate.isEmpty() && o.portPath.isEmpty()) o.simulate = "kdx";
    if (!o.simulate.isEmpty() && o.simulate != "kdx" && o.simulate != "qvane") {
        std::fprintf(stderr, "kdxtool: --simulate takes no value or =qvane\n");
        return std::nullopt;
    }
    return o;
}

// As a user would: once the configuration is read, pick motor 1 for tuning with 4 s
// sweeps and a low P; pin a whole sweep at that P as the reference, put P back, let one
// whole sweep with it run as a single sweep, so that it stays on the graph, and take the
// pictures when it has closed. Without a module answering, the pictures are taken all
// the same after a while.
class ScreenshotRun {
public:
    ScreenshotRun(kdx::Application& program, QString dir) : program_(program), dir_(std::move(dir))
    {
        kdx::GraphWin& graph = program_.graph;
        QTimer::singleShot(kScreenshotTuneMs, [this, &graph] {
            graph.MotorSelcb_Click(0);
            graph.TraceDurationcb_Click(0);
            for (int i = 0; i < kScreenshotPSteps; ++i) graph.Deccb_Click(kdx::Gain::P, 1);
            pinAfter_ = graph.model().review().sweepsTaken() + 2; // the sweep running now began at the old P
        });
        sweepWatch_.setInterval(100);
        QObject::connect(&sweepWatch_, &QTimer::timeout, [this] { watch(); });
        sweepWatch_.start();
        QTimer::singleShot(kScreenshotLimitMs, [this] { finish(); });
    }

private:
    void watch()
    {
        kdx::GraphWin& graph = program_.graph;
        const kdx::SweepReview& review = graph.model().review();
        if (pinAfter_ == 0) return;
        if (!review.reference() && review.sweepsTaken() >= pinAfter_) {
            graph.SweepPanelfr->Pincb_Click();
            for (int i = 0; i < kScreenshotPSteps; ++i) graph.Inccb_Click(kdx::Gain::P, 1);
            pinAfter_ = review.sweepsTaken() + 2;
        } else if (review.reference() && !single_ && review.sweepsTaken() >= pinAfter_ - 1) {
            graph.NowTrigcb_Click(); // the sweep now running is the last
            single_ = true;
        } else if (review.reference() && review.sweepsTaken() >= pinAfter_) {
            finish();
        }
    }
    void finish()
    {
        sweepWatch_.stop();
        QCoreApplication::exit(program_.saveScreenshots(dir_) ? 0 : 1);
    }

    kdx::Application& program_;
    QString dir_;
    QTimer sweepWatch_;
    int pinAfter_ = 0;
    bool single_ = false;
};

} // namespace

int main(int argc, char** argv)
{
    kdx::installTerminateReport("kdxtool");
    // --help and --version print and exit inside parser.process(); they need no display,
    // so they get a plain application and work on a machine without one.
    const bool textOnly = std::any_of(argv + 1, argv + argc, [](const char* arg) {
        const std::string_view a(arg);
        return a == "-h" || a == "--help" || a == "-?" || a == "-v" || a == "--version";
    });
    const std::unique_ptr<QCoreApplication> app =
        textOnly ? std::make_unique<QCoreApplication>(argc, argv) : std::make_unique<QApplication>(argc, argv);
    QApplication::setApplicationName("KDX Tool");
    QApplication::setApplicationVersion(
        QString("%1.%2.%3").arg(KDX_VERSION_MAJOR).arg(KDX_VERSION_MINOR).arg(KDX_VERSION_PATCH));

    const std::optional<Options> options = parseOptions(textOnly);
    if (!options) return 2;
    // The installed desktop entry and icon: Wayland matches windows to kdxtool.desktop.
    QGuiApplication::setDesktopFileName("kdxtool");
    QApplication::setWindowIcon(kdx::kdxToolIcon());
    const QString& portPath = options->portPath;
    const QString& simulate = options->simulate;
    const QString& screenshotDir = options->screenshotDir;

    kdx::QtSerialPort realPort;
    if (!portPath.isEmpty()) realPort.addExtraPort(portPath.toStdString());
    // The simulated module is listed beside the real ports and selected like one.
    kdx::QtSimPort port(&realPort);
    kdx::QtDialogs dialogs;
    kdx::QtKeyState keys;

    kdx::Application program(port, dialogs, keys);
    dialogs.setParent(&program.main);
    program.onEnded = [] { QCoreApplication::quit(); };
    // Start-up runs through the handlers' guard too: whatever a port or a file does, the
    // program comes up.
    kdx::guarded("Form_Load", [&] { program.Form_Load(); });
    kdx::guarded("selectPort", [&] {
        if (!simulate.isEmpty())
            program.comms.selectPortByName(simulate == "qvane" ? kdx::QtSimPort::QVaneName : kdx::QtSimPort::KdxName);
        else if (!portPath.isEmpty()) program.comms.selectPortByName(portPath.toStdString());
    });
    const QStringList& files = options->files;
    if (!files.isEmpty()) {
        kdx::guarded("openCommandLineFile", [&] { program.openCommandLineFile(files.first().toStdString()); });
    }
    std::optional<ScreenshotRun> screenshots;
    if (!screenshotDir.isEmpty()) screenshots.emplace(program, screenshotDir);
    const int rc = QCoreApplication::exec();
    program.comms.unload(); // the port is closed however the loop ended
    return rc;
}
