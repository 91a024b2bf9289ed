#include "windows/debug_display_window.h"

#include "widgets/stale_look.h"

#include "platform/qt_guard.h"
#include "platform/qt_window_close.h"
#include "telemetry/changed_only.h"
#include "telemetry/debug_bytes.h"
#include "widgets/refresh_pacer.h"
#include "widgets/text.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QFontDatabase>
#include <QGridLayout>
#include <QLabel>

namespace kdx {

namespace {
// Nobody reads a number faster: the labels follow the data 20 times a second, at most
// 50 ms behind it.
constexpr int kRefreshSpacingMs = 45;
constexpr int kRefreshMs = 50;
constexpr char kNoData[] = "-";
} // namespace

struct DebugDisplay::State {
    DebugBytes bytes{};
    bool received = false;
    std::array<ChangedOnly<uint8_t>, kDebugByteCount> shown;
    std::unique_ptr<RefreshPacer> refresh;
    bool stale = false;
    bool unloading = false;
};

DebugDisplay::DebugDisplay(Clock& clock, QWidget* parent)
    : QWidget(parent, Qt::Window), state_(std::make_unique<State>())
{
    setObjectName("DebugDisplay");
    setWindowTitle("Debug Display");
    auto* grid = new QGridLayout(this);
    const QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    for (std::size_t i = 0; i < kDebugByteCount; ++i) {
        const int row = static_cast<int>(i);
        DebugTitlelb[i] = new QLabel(this);
        DebugTitlelb[i]->setObjectName(QString("DebugTitlelb_%1").arg(row));
        grid->addWidget(DebugTitlelb[i], row, 0);
        DebugValuelb[i] = new QLabel(kNoData, this);
        DebugValuelb[i]->setObjectName(QString("DebugValuelb_%1").arg(row));
        DebugValuelb[i]->setFont(fixed);
        DebugValuelb[i]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        DebugValuelb[i]->setMinimumWidth(DebugValuelb[i]->fontMetrics().horizontalAdvance("255 (0xFF)") + 8);
        grid->addWidget(DebugValuelb[i], row, 1);
    }
    LogDebugcb = new QCheckBox("Log debug data", this);
    LogDebugcb->setObjectName("LogDebugcb");
    LogDebugcb->setToolTip(
        "Adds these seven columns to the telemetry log; tick it before Start so the header names them");
    grid->addWidget(LogDebugcb, static_cast<int>(kDebugByteCount), 0, 1, 2);

    state_->refresh = std::make_unique<RefreshPacer>(
        this, "RefreshTmr", kRefreshSpacingMs, kRefreshMs,
        [this] { guarded("refreshLabels", [&] { refreshLabels(); }); }, clock);

    Form_Load();
}

DebugDisplay::~DebugDisplay() = default;

void DebugDisplay::Form_Load()
{
    for (std::size_t i = 0; i < kDebugByteCount; ++i) DebugTitlelb[i]->setText(qs(kDebugTitles[i]));
}

// Called for every direct cyclic message (100 a second, far more during playback), so
// it only stores the bytes; the labels catch up at most every kRefreshMs, and not at all
// while the window is hidden.
void DebugDisplay::PutDebugData(const std::array<uint8_t, 7>& bytes)
{
    state_->bytes = bytes;
    state_->received = true;
    if (state_->stale) setStale(false);
    if (isVisible()) state_->refresh->changed();
}

bool DebugDisplay::GetLogDebugData() const { return LogDebugcb->isChecked(); }

std::string DebugDisplay::GetDebugTitles() const { return debugTitles(); }

std::string DebugDisplay::GetDebugStrToLog() const
{
    std::string s;
    appendDebugValues(s, state_->bytes);
    return s;
}

void DebugDisplay::unload()
{
    state_->unloading = true;
    state_->refresh->drop();
    close();
}

void DebugDisplay::setStale(bool stale)
{
    state_->stale = stale;
    for (QLabel* l : DebugValuelb) showStale(l, stale);
}

void DebugDisplay::refreshLabels()
{
    if (!isVisible() || !state_->received) return;
    for (std::size_t i = 0; i < kDebugByteCount; ++i)
        if (state_->shown[i].changed(state_->bytes[i]))
            DebugValuelb[i]->setText(QString::fromStdString(debugValueCaption(state_->bytes[i])));
}

void DebugDisplay::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    state_->refresh->refreshNow();
}

void DebugDisplay::closeEvent(QCloseEvent* event)
{
    closeUnlessUnloading(event, state_->unloading, [this] {
        state_->refresh->drop();
        hide();
    });
}

} // namespace kdx

#include "moc_debug_display_window.cpp"
