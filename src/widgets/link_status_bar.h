#pragma once
// The main window's status bar: the port, the target, the firmware, the link's state and
// the message rate, as permanent widgets, so temporary messages (showMessage) show beside
// them. Repainted from `inputs` twice a second at most, and only where a text changed.
#include "link/status_line.h"

#include <QObject>

#include <array>
#include <functional>

class QLabel;
class QStatusBar;
class QTimer;

namespace kdx {

class LinkStatusBar : public QObject {
public:
    static constexpr int RefreshMs = 500;

    // `inputs` gives everything but the rate, which is measured here from `goodMessages`.
    LinkStatusBar(QStatusBar* bar, std::function<StatusInputs()> inputs, std::function<uint64_t()> goodMessages);

    // The refresh timer's tick.
    void refresh();
    QTimer* refreshTimer = nullptr;
    // Port, target, firmware, link, rate.
    std::array<QLabel*, 5> labels{};

private:
    std::function<StatusInputs()> inputs_;
    std::function<uint64_t()> goodMessages_;
    MessageRate rate_;
};

} // namespace kdx
