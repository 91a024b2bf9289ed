// The pace of the "Current Values" panel: the live values are decoded, logged and sampled
// for every message, but their labels are refreshed from the latest values on a display
// timer, at most every LiveDisplayMs; and they are greyed while the link is lost.
#include "mainwindow/main_entry.h"

#include "platform/qt_guard.h"
#include "widgets/click_label.h"
#include "widgets/stale_look.h"

#include <QLabel>
#include <QTimer>

namespace kdx {

void MainEntry::buildLiveDisplayTimer()
{
    liveDisplayTimer_ = new QTimer(this);
    liveDisplayTimer_->setObjectName("liveDisplayTimer");
    liveDisplayTimer_->setInterval(LiveDisplayMs);
    liveDisplayTimer_->setSingleShot(true);
    connect(liveDisplayTimer_, &QTimer::timeout, this,
            [this] { guarded("flushLiveDisplay", [&] { flushLiveDisplay(); }); });
}

void MainEntry::scheduleLiveValues()
{
    liveDirty_ = true;
    // Started by the first message after a refresh, so refreshes are at least
    // LiveDisplayMs apart and a value waits at most that long.
    if (!liveDisplayTimer_->isActive()) liveDisplayTimer_->start();
}

void MainEntry::flushLiveDisplay()
{
    liveDisplayTimer_->stop();
    if (!liveDirty_) return;
    liveDirty_ = false;
    ShowLiveValues();
    if (liveStale_) setLiveValuesStale(false); // fresh values, fresh look
}

void MainEntry::setLiveValuesStale(bool stale)
{
    liveStale_ = stale;
    for (const auto* labels : {&ElecAngletb, &AxisRatetb, &AxisErrortb, &AxisPtb, &AxisItb, &AxisDtb, &ExtGaintb,
                               &AxisPowertb, &AxisAngletb})
        for (QLabel* l : *labels) showStale(l, stale);
    showStale(Voltagetb, stale);
    showStale(Switchtb, stale);
}

} // namespace kdx
