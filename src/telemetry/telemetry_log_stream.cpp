#include "telemetry/telemetry_log_stream.h"

#include "core/host_error.h"
#include "telemetry/log_line.h"

namespace kdx {

void TelemetryLogStream::PutCyclicMsg(const MsgView& msg) { put(msg, false); }

void TelemetryLogStream::PutCyclicQvaneMsg(const MsgView& msg) { put(msg, true); }

void TelemetryLogStream::ensureHeader()
{
    if (headerWritten_) return;
    text_ += telemetryFileTitles(false);
    headerWritten_ = true;
}

void TelemetryLogStream::put(const MsgView& msg, bool relayed)
{
    if (!headerWritten_) {
        // The mode follows the identifier before any field is read.
        text_ += telemetryFileTitles(relayed);
        headerWritten_ = true;
    }
    CyclicTelemetry decoded;
    try {
        decoded = relayed ? decodeCyclicQvaneMsg(msg) : decodeCyclicMsg(msg);
    } catch (const HostError&) {
        ++undecodable_;
        return;
    }
    applyDecoded(live_, decoded);
    appendTelemetryLogLine(text_, live_);
    ++lines_;
}

} // namespace kdx
