#pragma once
// The module's seven debug bytes as the main window hands them on, and what the debug
// display adds to the telemetry log when it logs them.
#include <array>
#include <cstdint>
#include <string>

namespace kdx {

class DebugChannel {
public:
    virtual ~DebugChannel() = default;
    virtual void PutDebugData(const std::array<uint8_t, 7>& bytes) = 0;
    // Whether the log lines carry the debug bytes.
    virtual bool GetLogDebugData() const = 0;
    // The column titles of the debug bytes, for the log's header.
    virtual std::string GetDebugTitles() const = 0;
    // The debug bytes of the latest message, as the log line's tail.
    virtual std::string GetDebugStrToLog() const = 0;
};

} // namespace kdx
