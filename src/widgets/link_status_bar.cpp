#include "widgets/link_status_bar.h"

#include "widgets/text.h"

#include <QLabel>
#include <QStatusBar>
#include <QTimer>

namespace kdx {

LinkStatusBar::LinkStatusBar(QStatusBar* bar, std::function<StatusInputs()> inputs,
                             std::function<uint64_t()> goodMessages, Clock& clock)
    : inputs_(std::move(inputs)), goodMessages_(std::move(goodMessages)), clock_(clock)
{
    static const char* const names[] = {"StatusPortlb", "StatusTargetlb", "StatusFirmwarelb", "StatusLinklb",
                                        "StatusRatelb"};
    for (std::size_t i = 0; i < labels.size(); ++i) {
        labels[i] = new QLabel(bar);
        labels[i]->setObjectName(names[i]);
        // Left of the main window's own permanent widgets: the comms quality stays at the right.
        bar->insertPermanentWidget(static_cast<int>(i), labels[i]);
    }
    refreshTimer = new QTimer(this);
    refreshTimer->setObjectName("StatusRefresh");
    refreshTimer->setInterval(RefreshMs);
    connect(refreshTimer, &QTimer::timeout, this, [this] { refresh(); });
    refreshTimer->start();
    refresh();
}

void LinkStatusBar::refresh()
{
    StatusInputs in = inputs_();
    in.messagesPerSecond = rate_.update(goodMessages_(), clock_.nowNs());
    const StatusTexts t = statusTexts(in);
    const std::string* texts[] = {&t.port, &t.target, &t.firmware, &t.link, &t.rate};
    for (std::size_t i = 0; i < labels.size(); ++i) {
        showText(labels[i], *texts[i]);
        labels[i]->setVisible(!texts[i]->empty());
    }
}

} // namespace kdx
