#pragma once
// A blocking conversation with a module over any byte link, for command-line tools:
// learn from the cyclic telemetry whether a KDX is wired directly or a Q-Vane relays,
// select the Q-Vane axis, read and write the configuration memory. The windows do
// not use it: they wait with MemReqTimer instead of blocking.
#include "config/memory_image.h"
#include "config/memory_transfer.h"
#include "link/frame.h"
#include "link/message_sink.h"
#include "link/receiver.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace kdx {

// The two things the session needs from a port. `read` waits up to timeoutMs and
// appends what arrived; both return false with a reason when the line failed.
struct ByteLinkIo {
    std::function<bool(std::span<const uint8_t> bytes, std::string& error)> write;
    std::function<bool(std::vector<uint8_t>& out, int timeoutMs, std::string& error)> read;
};

enum class TargetKind { Unknown, Direct, QVane };

class MemorySession : private MessageSink {
public:
    // `portName` appears in the failure texts ("no telemetry from /dev/ttyUSB0 within 1 s").
    MemorySession(ByteLinkIo io, std::string portName);

    // Listens for cyclic telemetry (121 direct, 122 relayed) up to timeoutMs.
    bool detectTarget(int timeoutMs, std::string& error);
    TargetKind target() const { return target_; }
    bool targetIsQVane() const { return target_ == TargetKind::QVane; }

    // Axis used by relayed requests (0 Tilt, 1 Roll, 2 Pan); sendAxisSelect also tells the
    // Q-Vane to relay that axis.
    void setAxis(int axis) { axis_ = axis; }
    int axis() const { return axis_; }
    bool sendAxisSelect(std::string& error);

    // Sends the read request and waits up to timeoutMs for the memory contents, asking
    // `attempts` times in all. On success the reply is copied into `image` (elements
    // 0 .. 59 direct, 0 .. 29 relayed; the rest untouched). A reply shorter than its
    // layout is not taken (the request is sent again at once); when no full one came,
    // the error says how short the last one was.
    bool readMemory(MemoryImage& image, int timeoutMs, int attempts, std::string& error);

    // Sends the image in a write message (direct 0 .. 59, relayed 0 .. 29).
    bool writeMemory(const MemoryImage& image, std::string& error);

    // Elements a read or write moves for the current target.
    int transferredElements() const;

    // Firmware version bytes of the last relayed memory reply.
    FirmwareVersion lastVersion() const { return version_; }

private:
    bool send(const OutMsgBuffer& msg, std::string& error);
    // Reads until `done` or the deadline; false only when the line failed.
    bool pump(int timeoutMs, const std::function<bool()>& done, std::string& error);

    void PutCyclicMsg(const MsgView& msg) override;
    void PutCyclicQvaneMsg(const MsgView& msg) override;
    void PutMemoryMsg(const MsgView& msg) override;
    void PutAxisMemoryMsg(const MsgView& msg) override;
    void PutMessageReceived(bool) override {}

    ByteLinkIo io_;
    std::string portName_;
    Receiver receiver_;
    TargetKind target_ = TargetKind::Unknown;
    int axis_ = 0;
    bool awaitingMemory_ = false;
    bool gotMemory_ = false;
    int shortReplies_ = 0;    // replies too short to take, during the current read
    int shortReplyBytes_ = 0; // the payload of the last of them
    MemoryImage reply_{};
    FirmwareVersion version_{};
};

} // namespace kdx
