#pragma once
// The telemetry log as the main window feeds it: whether lines are wanted, and one line.
#include <string>

namespace kdx {

class TelemetryLog {
public:
    virtual ~TelemetryLog() = default;
    virtual bool GetLoggingDataToFile() const = 0;
    // One line, CR LF included.
    virtual void PutStringToLog(const std::string& line) = 0;
};

} // namespace kdx
