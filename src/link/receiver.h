#pragma once
// The byte-at-a-time receiver: rebuilds frames, checks them, counts them and dispatches
// them by identifier; and the cyclic-telemetry watchdog that goes with it.
#include "link/frame.h"
#include "link/message_sink.h"

#include <cstdint>
#include <functional>
#include <span>

namespace kdx {

class Receiver {
public:
    // A consumer may throw the host's errors; the receiver lets them propagate so the
    // event guard of the caller abandons the handler (a later byte still arrives in a
    // receiver in a consistent state).
    explicit Receiver(MessageSink* sink = nullptr, LinkLossListener* loss = nullptr);

    void setSink(MessageSink* sink) { sink_ = sink; }
    void setLossListener(LinkLossListener* loss) { loss_ = loss; }

    // One received byte, in arrival order.
    void ReceiveByte(uint8_t value);
    // Feeds many bytes. A host error raised by a consumer abandons that one message and
    // reception goes on with the next byte, as it would with one event per byte.
    void receiveBytes(std::span<const uint8_t> bytes);
    // Feeds bytes while the guard is free and returns how many were taken: all of them,
    // unless a consumer's fault left ProcessingMsg set (the faulted message's last byte
    // is taken, the rest is not). A held guard takes nothing.
    std::size_t receiveWhileFree(std::span<const uint8_t> bytes);
    // Forces hunting for the next start byte; a partly collected frame is forgotten.
    void ResetSync() { InSync = false; }
    // The checksum test on InBuf: plain or inverted sum.
    bool ChecksumGood() const;
    // Called when InBuf holds a complete message.
    void ProcessInputMessage();
    bool GetCommsGood() const { return CommsGood; }
    // The 500 ms watchdog tick.
    void CommsTimeout_Timer();

    // Receiver state, named as the protocol's documentation names it.
    bool InSync = false;
    uint8_t MsgLength = 0;
    int16_t MsgIndex = 0;
    InBuffer InBuf{};
    bool ProcessingMsg = false;
    int32_t CommsErrorCount = 0;
    int16_t CyclicMsgCount = 0;
    int16_t LastCyclicMsgCount = 0;
    bool CommsGood = false;

    // Counters for tools (not part of the dispatch rules): every good and bad message.
    uint64_t goodMessages = 0;
    uint64_t badMessages = 0;

private:
    MessageSink* sink_;
    LinkLossListener* loss_;
};

} // namespace kdx
