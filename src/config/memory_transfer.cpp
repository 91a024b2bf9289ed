#include "config/memory_transfer.h"

#include "link/message_ids.h"

namespace kdx {

using namespace layout;

void buildReadRequest(OutMsgBuffer& out, bool targetIsQVane, int axis)
{
    if (!targetIsQVane) {
        out[0] = 3;
        out[1] = msg::ReadMemory;
    } else {
        out[0] = 4;
        out[1] = msg::RelayMarker;
        out[2] = static_cast<int16_t>(msg::RelayedReadBase + axis);
    }
    putChecksum(out);
}

void buildWriteMessage(OutMsgBuffer& out, const MemoryImage& image, bool targetIsQVane, int axis)
{
    int next;
    int count;
    if (!targetIsQVane) {
        out[0] = DirectBytes + 3;
        out[1] = msg::WriteMemory;
        next = 2;
        count = DirectBytes;
    } else {
        out[0] = RelayedBytes + 4;
        out[1] = msg::RelayMarker;
        out[2] = static_cast<int16_t>(msg::RelayedWriteBase + axis);
        next = 3;
        count = RelayedBytes;
    }
    for (int i = 0; i < count; ++i) out[static_cast<std::size_t>(next + i)] = image[static_cast<std::size_t>(i)];
    putChecksum(out);
}

void buildAxisSelect(OutMsgBuffer& out, int axis)
{
    out[0] = 3;
    out[1] = static_cast<int16_t>(msg::SelectAxisBase + axis);
    out[2] = static_cast<int16_t>(out[1] + 3);
}

int memoryReplyId(bool targetIsQVane, int axis)
{
    return targetIsQVane ? msg::AxisMemoryBase + axis : msg::MemoryContents;
}

void PutMemoryMsg(MemoryImage& image, const MsgView& msg)
{
    for (int i = 0; i < DirectBytes; ++i) image[static_cast<std::size_t>(i)] = msg[i + 2];
}

FirmwareVersion PutAxisMemoryMsg(MemoryImage& image, const MsgView& msg)
{
    for (int i = 0; i < RelayedBytes; ++i) image[static_cast<std::size_t>(i)] = msg[i + 2];
    return FirmwareVersion{msg[RelayedBytes + 2], msg[RelayedBytes + 3]};
}

} // namespace kdx
