#include "link/receiver.h"

#include "core/host_error.h"
#include "link/message_ids.h"

namespace kdx {

Receiver::Receiver(MessageSink* sink, LinkLossListener* loss) : sink_(sink), loss_(loss) {}

void Receiver::ReceiveByte(uint8_t value)
{
    if (!InSync) {
        if (value == msg::StartByte) {
            InSync = true;
            MsgIndex = 0;
            MsgLength = 0;
        } else {
            ++CommsErrorCount;
        }
        return;
    }
    if (MsgLength == 0) {
        MsgLength = value;
        InBuf[0] = value;
        MsgIndex = 1;
        if (value < msg::MinLength) InSync = false; // abandoned; the next byte may start a frame
        return;
    }
    InBuf[static_cast<std::size_t>(MsgIndex)] = value;
    if (MsgIndex == MsgLength - 1) {
        // Sync is dropped before dispatch, so a consumer that faults leaves the receiver
        // hunting from the next byte, as after any message. The bytes of a rejected frame
        // are never rescanned. A fault does leave ProcessingMsg set: messages are then
        // dropped until the watchdog's next tick clears the guard.
        InSync = false;
        if (!ProcessingMsg) {
            ProcessingMsg = true;
            ProcessInputMessage();
            ProcessingMsg = false;
        }
        return;
    }
    ++MsgIndex;
}

void Receiver::receiveBytes(std::span<const uint8_t> bytes)
{
    for (uint8_t b : bytes) {
        try {
            ReceiveByte(b);
        } catch (const HostError&) {
            // The consumer's handler is abandoned; reception goes on.
        }
    }
}

std::size_t Receiver::receiveWhileFree(std::span<const uint8_t> bytes)
{
    std::size_t taken = 0;
    while (taken < bytes.size() && !ProcessingMsg) {
        try {
            ReceiveByte(bytes[taken++]);
        } catch (const HostError&) {
            // The consumer's handler is abandoned, its guard left set.
        }
    }
    return taken;
}

bool Receiver::ChecksumGood() const
{
    const int length = InBuf[0];
    const int received = InBuf[static_cast<std::size_t>(length - 1)];
    int sum = 0;
    for (int i = 0; i <= length - 2; ++i) sum += InBuf[static_cast<std::size_t>(i)];
    sum &= 0xFF;
    return received == sum || ((~received) & 0xFF) == sum;
}

void Receiver::ProcessInputMessage()
{
    if (!ChecksumGood()) {
        ++badMessages;
        if (sink_) sink_->PutMessageReceived(false);
        ++CommsErrorCount;
        return;
    }
    ++goodMessages;
    if (sink_) sink_->PutMessageReceived(true);
    const MsgView view(InBuf, InBuf[0]);
    const int id = InBuf[1];
    switch (id) {
    case msg::Cyclic:
    case msg::CyclicQVane:
        if (sink_) {
            if (id == msg::Cyclic) sink_->PutCyclicMsg(view);
            else sink_->PutCyclicQvaneMsg(view);
        }
        CyclicMsgCount = static_cast<int16_t>((CyclicMsgCount + 1) % 32000);
        CommsGood = true;
        break;
    case msg::MemoryContents:
        if (sink_) sink_->PutMemoryMsg(view);
        break;
    case msg::AxisMemoryBase:
    case msg::AxisMemoryBase + 1:
    case msg::AxisMemoryBase + 2:
        if (sink_) sink_->PutAxisMemoryMsg(view);
        break;
    default: break; // accepted, counted as good, ignored
    }
}

void Receiver::CommsTimeout_Timer()
{
    if (CyclicMsgCount == LastCyclicMsgCount) {
        const bool wasGood = CommsGood;
        CommsGood = false;
        if (wasGood && loss_) loss_->PutCommsJustWentBad();
    } else {
        LastCyclicMsgCount = CyclicMsgCount;
    }
    ProcessingMsg = false;
}

} // namespace kdx
