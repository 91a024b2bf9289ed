// The Comms Link window's "File" frame: a recording played into the receiver instead of
// the port, the marks, and "Write File".
#include "link/comms_link_window.h"

#include "platform/dialogs.h"
#include "platform/qt_guard.h"
#include "platform/qt_local_path.h"
#include "widgets/face_colour.h"
#include "widgets/text.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScopeGuard>
#include <QTimer>

#include <algorithm>

namespace kdx {

namespace {

// The recording played when none is chosen, as the system names it.
constexpr std::string_view kDefaultInputName = "D:\\Logs\\Run 0.Log";
constexpr std::string_view kInputDialogTitle = "Data File Select";
constexpr std::string_view kInputFilter = "Recorded Data|*.Log;*.rec|All Files|*.*";
constexpr std::string_view kOpenErrorPrefix = "Error opening data file: ";
constexpr std::string_view kReadErrorPrefix = "Error reading data file: ";
constexpr std::string_view kFileErrorTitle = "File Open";
constexpr std::string_view kTrimErrorTitle = "KDX Tool";

std::string folderOf(const std::string& path)
{
    const auto slash = path.find_last_of("/\\");
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

QPushButton* button(const char* name, const char* caption, QWidget* parent, const char* tip = nullptr)
{
    auto* b = new QPushButton(caption, parent);
    b->setObjectName(name);
    if (tip) b->setToolTip(tip);
    return b;
}

QLabel* caption(const char* name, const char* text, QWidget* parent)
{
    auto* l = new QLabel(text, parent);
    l->setObjectName(name);
    l->setFrameShape(QFrame::Panel);
    l->setFrameShadow(QFrame::Sunken);
    return l;
}

} // namespace

void CommsLink::buildFileFrame()
{
    CommsFileIPFr = new QGroupBox("File", this);
    CommsFileIPFr->setObjectName("CommsFileIPFr");
    QGroupBox* f = CommsFileIPFr;
    auto* grid = new QGridLayout(f);

    LogFileInName = caption("LogFileInName", "", f);
    LogFileInName->setMinimumWidth(220);
    LogFileInName->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // a long path does not widen the window
    LogFileInName->setTextInteractionFlags(Qt::TextSelectableByMouse);
    SetInputFilename(localPath(kDefaultInputName));
    LogFileInChangecb = button("LogFileInChangecb", "Change", f, "Select a new data-file to read from");
    grid->addWidget(LogFileInName, 0, 0, 1, 3);
    grid->addWidget(LogFileInChangecb, 0, 3);

    StartLogIn = button("StartLogIn", "Start", f, "Begin reading data from file");
    PauseLogIn = button("PauseLogIn", "Pause", f, "Pause data-play");
    StopLogIn = button("StopLogIn", "Stop", f, "Stop playing data");
    DoingInFile = new QLabel(f);
    DoingInFile->setObjectName("DoingInFile");
    DoingInFile->setFixedSize(16, 16);
    DoingInFile->setFrameShape(QFrame::Box);
    DoingInFile->setToolTip("Green while a file is playing");
    auto* play = new QHBoxLayout;
    play->addWidget(StartLogIn);
    play->addWidget(PauseLogIn);
    play->addWidget(StopLogIn);
    play->addWidget(DoingInFile);
    grid->addLayout(play, 1, 0, 1, 4);

    auto* rates = new QHBoxLayout;
    for (std::size_t i = 0; i < Rateob.size(); ++i) {
        auto* b = new QRadioButton(qs(playback::Rates[i].caption), f);
        b->setObjectName(QString("Rateob%1").arg(i));
        const int index = static_cast<int>(i);
        connect(b, &QRadioButton::clicked, this,
                [this, index] { guarded("Rateob_Click", [&] { Rateob_Click(index); }); });
        rates->addWidget(b);
        Rateob[i] = b;
    }
    grid->addLayout(rates, 2, 0, 1, 4);

    MarkStartcb = button("MarkStartcb", "Mark Start", f);
    MarkStarttb = caption("MarkStarttb", "0K", f);
    MarkEndcb = button("MarkEndcb", "Mark End", f);
    MarkEndtb = caption("MarkEndtb", "0K", f);
    grid->addWidget(MarkStartcb, 3, 0);
    grid->addWidget(MarkStarttb, 3, 1);
    grid->addWidget(MarkEndcb, 3, 2);
    grid->addWidget(MarkEndtb, 3, 3);

    Trimcb = button("Trimcb", "Write File", f);
    Trimtb = caption("Trimtb", "0K", f);
    KProcessedlab = caption("KProcessedlab", "0K", f);
    Trimtb->setToolTip("Bytes written by Write File");
    KProcessedlab->setToolTip("Bytes played");
    grid->addWidget(Trimcb, 4, 0);
    grid->addWidget(Trimtb, 4, 1);
    grid->addWidget(KProcessedlab, 4, 3);
    grid->setRowStretch(5, 1);

    const std::pair<QPushButton*, void (CommsLink::*)()> clicks[] = {
        {LogFileInChangecb, &CommsLink::LogFileInChangecb_Click},
        {StartLogIn, &CommsLink::StartLogIn_Click},
        {PauseLogIn, &CommsLink::PauseLogIn_Click},
        {StopLogIn, &CommsLink::StopLogIn_Click},
        {MarkStartcb, &CommsLink::MarkStartcb_Click},
        {MarkEndcb, &CommsLink::MarkEndcb_Click},
        {Trimcb, &CommsLink::Trimcb_Click},
    };
    for (const auto& click : clicks) {
        const auto handler = click.second; // a copy: clang 14 cannot capture a structured binding
        connect(click.first, &QPushButton::clicked, this, [this, name = click.first->objectName().toUtf8(), handler] {
            guarded(name.constData(), [&] { (this->*handler)(); });
        });
    }
    showDoingInFile(false);
}

void CommsLink::showDoingInFile(bool playing) { paintFace(DoingInFile, playing ? PlayingColour : IdleColour); }

void CommsLink::SetInputFilename(const std::string& name)
{
    const QString text = QString::fromStdString(name);
    LogFileInName->setText(text);
    LogFileInName->setToolTip(text);
}

std::string CommsLink::inputFilename() const { return LogFileInName->text().toStdString(); }

void CommsLink::LogFileInChangecb_Click()
{
    FileDialogRequest r;
    r.title = std::string(kInputDialogTitle);
    r.filter = std::string(kInputFilter);
    r.fileName = inputFilename();
    r.initialDir = folderOf(r.fileName);
    const auto path = dialogs_.OpenFile(r);
    if (path && !path->empty()) SetInputFilename(*path);
}

void CommsLink::StartLogIn_Click()
{
    if (playback_.PlaybackPaused) PauseLogIn_Click();
    if (const auto error = playback_.open(inputFilename())) {
        dialogs_.MsgBox(std::string(kOpenErrorPrefix) + *error, box::Critical, std::string(kFileErrorTitle));
        return;
    }
    PlaybackActive = true;
    awaitingGuard_ = false;
    pacer_.reset(clock_.nowNs());
    rx_.ResetSync(); // a frame half received from the port is not finished from the file
    showDoingInFile(true);
    FileInputTimer->start();
    PlaybackBusy = false;
    updateLinkState();
    // KProcessedlab keeps its caption until the next whole kilobyte.
}

void CommsLink::PauseLogIn_Click()
{
    playback_.PlaybackPaused = !playback_.PlaybackPaused;
    PauseLogIn->setText(playback_.PlaybackPaused ? "Resume" : "Pause");
}

void CommsLink::StopLogIn_Click()
{
    playback_.close();
    FileInputTimer->stop();
    nextSlice_->stop();
    awaitingGuard_ = false;
    showDoingInFile(false);
    if (PlaybackActive) rx_.ResetSync(); // the port feeds the receiver again, from a start byte
    PlaybackActive = false;
    if (playback_.PlaybackPaused) PauseLogIn_Click();
    updateLinkState();
}

void CommsLink::Rateob_Click(int index)
{
    if (index < 0 || index >= static_cast<int>(playback::Rates.size())) return;
    const playback::Rate& rate = playback::Rates[static_cast<std::size_t>(index)];
    FileInputTimer->setInterval(rate.interval);
    playback_.PlaybackMaxRate = rate.maxRate;
    QRadioButton* b = Rateob[static_cast<std::size_t>(index)];
    if (!b->isChecked()) b->setChecked(true);
    if (PlaybackActive) updateLinkState(); // the status shows the rate playing
}

void CommsLink::MarkStartcb_Click()
{
    playback_.MarkStartNow();
    MarkStarttb->setText(QString::fromStdString(KiloCaption(playback_.MarkStart)));
}

void CommsLink::MarkEndcb_Click()
{
    playback_.MarkEndNow();
    MarkEndtb->setText(QString::fromStdString(KiloCaption(playback_.MarkEnd)));
}

void CommsLink::FileInputTimer_Timer()
{
    if (PlaybackBusy) return;
    PlaybackBusy = true;
    const auto done = qScopeGuard([this] { PlaybackBusy = false; });
    if (!playback_.isOpen()) return;
    const int64_t start = clock_.nowNs();
    const uint64_t goodBefore = rx_.goodMessages;
    const double allowance = pacer_.allowance(start);
    bool paced = false;
    const auto sliceSpent = [&] {
        paced = static_cast<double>(rx_.goodMessages - goodBefore) >= allowance;
        return paced || clock_.nowNs() - start >= int64_t{MaxRateSliceMs} * 1000000;
    };
    const Playback::Tick t = playback_.tick(
        [this](std::span<const uint8_t> bytes) { return rx_.receiveWhileFree(bytes); },
        [this](int32_t played) { KProcessedlab->setText(QString::fromStdString(KiloCaption(played))); }, sliceSpent);
    if (playback_.PlaybackMaxRate) pacer_.spend(static_cast<double>(rx_.goodMessages - goodBefore));
    if (t.reachedEnd) {
        const std::string error = playback_.readError();
        StopLogIn_Click();
        if (!error.empty())
            readErrorBox_.post([this, error] {
                dialogs_.MsgBox(std::string(kReadErrorPrefix) + error, box::Critical, std::string(kFileErrorTitle));
            });
    } else if (t.held) {
        // Nothing goes to a held receiver, or it would drop every message until the
        // watchdog's tick, which at "Max" is minutes of recording. That tick resumes.
        FileInputTimer->stop();
        nextSlice_->stop();
        awaitingGuard_ = true;
    } else if (t.more && !paced) {
        nextSlice_->start(); // the event loop runs once, then the next slice
    }
    // Paced: the 1 ms timer comes back once the allowance has grown.
}

void CommsLink::Trimcb_Click()
{
    if (trim_.copying()) return; // the copy under way finishes first
    // The trim reads the recording from its beginning itself: whatever was playing
    // stops, and the window stands as at Start with the timer off, so that nothing
    // reaches the receiver meanwhile. It ends idle, at 0 bytes.
    StopLogIn_Click();
    PlaybackActive = true;
    showDoingInFile(true);
    playback_.BytesPlayed = 0;
    playback_.PlaybackAtEnd = false;
    if (!trim_.start(inputFilename(), playback_.MarkStart, playback_.MarkEnd)) {
        finishTrim();
        return;
    }
    trimTimer_->start();
}

void CommsLink::trimNextKilobyte()
{
    if (!trim_.copying()) return;
    const bool more = trim_.copy(playback::KiloByte);
    const int64_t copied = trim_.result().copied;
    if (copied > 0 && copied % playback::KiloByte == 0) Trimtb->setText(QString::fromStdString(KiloCaption(copied)));
    if (!more) finishTrim();
}

void CommsLink::finishTrim()
{
    trimTimer_->stop();
    StopLogIn_Click();
    if (!trim_.result().ok)
        trimErrorBox_.post(
            [this] { dialogs_.MsgBox(std::string(trim::ErrorText), box::OkOnly, std::string(kTrimErrorTitle)); });
}

} // namespace kdx
