#include "link/status_line.h"

#include "core/host_numeric.h"

#include <cmath>
#include <ctime>

namespace kdx {

namespace {

// Local wall-clock time of day, hh:mm:ss.
std::string timeOfDay(std::chrono::system_clock::time_point t)
{
    const std::time_t secs = std::chrono::system_clock::to_time_t(t);
    std::tm local{};
    localtime_r(&secs, &local);
    char text[16];
    std::strftime(text, sizeof text, "%H:%M:%S", &local);
    return text;
}

std::string linkText(const LinkStatus& s)
{
    switch (s.state) {
    case LinkState::NoPort: return "no port open";
    case LinkState::Waiting: return "waiting for telemetry";
    case LinkState::Live: return "live";
    case LinkState::Lost: return "lost since " + timeOfDay(s.lostAt);
    case LinkState::Reconnecting: return "reconnecting";
    case LinkState::Playing: {
        std::string rate = s.playbackRate;
        rate.erase(0, rate.find_first_not_of(' ')); // " x2" is a caption; "at x2" reads better
        return "playing " + s.playbackFile + (rate.empty() ? "" : " at " + rate);
    }
    }
    return {};
}

} // namespace

StatusTexts statusTexts(const StatusInputs& in)
{
    StatusTexts t;
    const LinkStatus& s = in.link;
    if (s.port.empty()) t.port = "No port";
    else if (s.portNumber > 0) t.port = "Port " + std::to_string(s.portNumber) + ": " + s.port;
    else t.port = "Port " + s.port;
    static const char* const axes[] = {"Tilt", "Roll", "Pan"};
    t.target = "KDX";
    if (in.qvane) {
        t.target = "Q-Vane";
        if (in.qvaneAxis >= 0 && in.qvaneAxis <= 2) t.target += std::string(" ") + axes[in.qvaneAxis];
    }
    if (in.versionMajor >= 0)
        t.firmware = "Firmware " + Format(in.versionMajor, "0") + "." + Format(in.versionMinor, "00");
    t.link = linkText(s);
    t.rate = std::to_string(std::lround(in.messagesPerSecond)) + " msg/s";
    return t;
}

double MessageRate::update(uint64_t count, Clock::time_point now)
{
    double rate = 0;
    if (last_ && now > *last_ && count >= lastCount_)
        rate = static_cast<double>(count - lastCount_) / std::chrono::duration<double>(now - *last_).count();
    last_ = now;
    lastCount_ = count;
    return rate;
}

} // namespace kdx
