#pragma once
// Received messages in, telemetry log text out: what the logging window writes when a
// log is running from the first message on. Used by kdxctl's decode and monitor.
#include "link/message_sink.h"
#include "telemetry/cyclic_telemetry.h"

#include <cstdint>
#include <string>

namespace kdx {

class TelemetryLogStream : public MessageSink {
public:
    // The header goes out with the first cyclic message, in that message's mode (relayed
    // for 122, direct for 121), even when the message itself cannot be decoded. Each
    // decoded message then adds one line in its own mode, without debug columns. A
    // message the decoder rejects (shorter than its layout, or a relayed axis byte of 3
    // or more) adds no line and is counted in undecodable(); the next message decodes
    // as usual.
    void PutCyclicMsg(const MsgView& msg) override;
    void PutCyclicQvaneMsg(const MsgView& msg) override;
    void PutMemoryMsg(const MsgView&) override {}
    void PutAxisMemoryMsg(const MsgView&) override {}
    void PutMessageReceived(bool) override {}

    // The text produced and not yet taken. The caller writes it out and clears it; the
    // storage is kept, so steady streaming does not allocate.
    std::string& text() { return text_; }

    // Adds the direct header if no cyclic message has come yet: a log with no telemetry
    // is what the logging window writes when started before any telemetry arrived.
    void ensureHeader();

    bool headerWritten() const { return headerWritten_; }
    uint64_t lines() const { return lines_; }
    uint64_t undecodable() const { return undecodable_; }
    // The live values after the last decoded message.
    const CyclicTelemetry& live() const { return live_; }

private:
    void put(const MsgView& msg, bool relayed);

    std::string text_;
    CyclicTelemetry live_;
    bool headerWritten_ = false;
    uint64_t lines_ = 0;
    uint64_t undecodable_ = 0;
};

} // namespace kdx
