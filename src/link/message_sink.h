#pragma once
// The two narrow interfaces the link knows: where complete messages go, and who hears
// that cyclic telemetry has stopped.
#include "link/frame.h"

namespace kdx {

class MessageSink {
public:
    virtual ~MessageSink() = default;
    virtual void PutCyclicMsg(const MsgView& msg) = 0;
    virtual void PutCyclicQvaneMsg(const MsgView& msg) = 0;
    virtual void PutMemoryMsg(const MsgView& msg) = 0;
    virtual void PutAxisMemoryMsg(const MsgView& msg) = 0;
    virtual void PutMessageReceived(bool good) = 0;
};

class LinkLossListener {
public:
    virtual ~LinkLossListener() = default;
    // Called once per loss, on the true-to-false edge of CommsGood.
    virtual void PutCommsJustWentBad() = 0;
};

} // namespace kdx
