// The pace of the "Current Values" panel: the live values are decoded, logged and sampled
// for every message, but their labels are refreshed from the latest values 20 times a
// second, by the message that finds the last refresh old enough (or by the display timer
// once messages stop); and they are greyed while the link is lost.
#include "mainwindow/main_entry.h"

#include "platform/qt_guard.h"
#include "widgets/click_label.h"
#include "widgets/refresh_pacer.h"
#include "widgets/stale_look.h"

#include <QLabel>

namespace kdx {

void MainEntry::buildLiveDisplayTimer()
{
    livePacer_ = std::make_unique<RefreshPacer>(
        this, "liveDisplayTimer", LiveDisplaySpacingMs, LiveDisplayMs,
        [this] {
            guarded("flushLiveDisplay", [&] {
                ShowLiveValues();
                if (liveStale_) setLiveValuesStale(false); // fresh values, fresh look
            });
        },
        peers_.clock);
}

void MainEntry::scheduleLiveValues() { livePacer_->changed(); }

void MainEntry::flushLiveDisplay() { livePacer_->flush(); }

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
