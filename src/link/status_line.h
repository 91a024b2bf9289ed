#pragma once
// The texts of the main window's status bar, formatted from the link's state and what
// the telemetry has told of the target; no Qt, so each text can be checked by itself.
#include "link/link_state.h"

#include <cstdint>
#include <optional>
#include <string>

namespace kdx {

struct StatusInputs {
    LinkStatus link;
    bool qvane = false;
    int qvaneAxis = 3;     // 0 Tilt, 1 Roll, 2 Pan; anything else: none known yet
    int versionMajor = -1; // -1 until the first telemetry told it
    int versionMinor = 0;
    double messagesPerSecond = 0;
};

struct StatusTexts {
    std::string port;     // "Port 2: /dev/ttyUSB1", "No port"
    std::string target;   // "KDX", "Q-Vane Roll"
    std::string firmware; // "Firmware 1.05", empty until known
    std::string link;     // "live", "lost since 14:03:07", ...
    std::string rate;     // "25 msg/s"
};

StatusTexts statusTexts(const StatusInputs& in);

// Good messages a second, from the receiver's running count read now and then.
class MessageRate {
public:
    // The rate since the previous reading at `nowNs` on the program's clock (0 at the first).
    double update(uint64_t count, int64_t nowNs);

private:
    std::optional<int64_t> last_;
    uint64_t lastCount_ = 0;
};

} // namespace kdx
