#pragma once
// What the module last reported, kept beside the configuration on screen, so the window
// can mark each parameter that an edit or a loaded file has changed since. A parameter
// counts as changed when its value differs from the report and either its label or the
// bytes a write would store differ too: Cancel on an entry (which re-stores the value
// rounded to two decimals) and a PWM count that a write would lower by one with no edit
// are not changes.
#include "config/driver_config.h"
#include "config/param_fields.h"

#include <string>
#include <vector>

namespace kdx {

struct ChangedParam {
    const ParamField* field; // an entry of kParamFields, or kDebugIdField
    int motor;               // 0 or 1 (0 for the debug identifier)
    std::string reported;    // the value as the window showed it after the report
};

class ConfigBaseline {
public:
    // A memory-contents message has replaced the image: `reported` is what the module
    // holds now (one byte per element, as the window received it).
    void take(const MemoryImage& reported);
    bool taken() const { return taken_; }

    // The parameters of `shown` that differ from the last report, motor 0 then motor 1
    // in kParamFields order, then the debug identifier. Nothing before the first report.
    std::vector<ChangedParam> changes(const DriverConfig& shown) const;

private:
    bool taken_ = false;
    MemoryImage image_{};
    DriverConfig reported_;
};

// Visits every parameter the window shows, (field, motor): motor 0 then motor 1 in
// kParamFields order, then the debug identifier (kDebugIdField, motor 0).
template <typename F>
void forEachShownParam(F&& visit)
{
    for (int m = 0; m < 2; ++m)
        for (const ParamField& field : kParamFields) visit(field, m);
    visit(kDebugIdField, 0);
}

// The configuration on screen as an image, for comparing it with a file: the image last
// read, loaded or written, with the bytes of each parameter changed since then as a
// write would store them, and the debug identifier shown in element 0. Parameters left
// alone keep their bytes exactly.
MemoryImage imageOnScreen(const DriverConfig& shown);

} // namespace kdx
