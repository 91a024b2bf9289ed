#pragma once
// The marks beside the main window's parameter values: a "●" in the gap right of each
// value (the reverse box and the debug identifier included) while the value differs from
// what the module last reported, in the palette's own text colour so it reads on light
// and dark themes alike. The marks sit outside the layouts, so the window keeps its
// width. A memory-contents message clears them all.
#include "config/config_baseline.h"

#include <QString>

#include <functional>
#include <map>
#include <utility>

class QLabel;
class QWidget;

namespace kdx {

class ChangeMarkers {
public:
    // The control that shows a parameter for a motor (0 or 1): its value label, the
    // reverse box, or the debug identifier's label.
    using ValueControl = std::function<QWidget*(const ParamField& field, int motor)>;

    // Puts an empty mark right of every control; it follows the control as it moves.
    explicit ChangeMarkers(ValueControl control);

    // After a memory-contents message: `config` holds what the module reported.
    void takeReport(const DriverConfig& config);
    // Marks what differs from the last report; nothing before the first.
    void show(const DriverConfig& config);

    // The mark of a parameter (its text is "●" while changed, empty otherwise).
    QLabel* mark(const ParamField& field, int motor) const;
    // The name the window shows for a parameter: the caption left of its control
    // ("PWM (kHz)"), or the reverse box's own text.
    QString shownName(const ParamField& field, int motor) const;

private:
    ValueControl control_;
    ConfigBaseline baseline_;
    std::map<std::pair<const ParamField*, int>, QLabel*> marks_;
};

} // namespace kdx
