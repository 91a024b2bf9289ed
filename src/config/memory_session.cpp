#include "config/memory_session.h"

#include "core/host_error.h"
#include "link/message_ids.h"

#include <algorithm>
#include <chrono>

namespace kdx {

namespace {

std::string durationText(int ms)
{
    return ms % 1000 == 0 ? std::to_string(ms / 1000) + " s" : std::to_string(ms) + " ms";
}

} // namespace

MemorySession::MemorySession(ByteLinkIo io, std::string portName)
    : io_(std::move(io)), portName_(std::move(portName)), receiver_(this)
{
}

bool MemorySession::send(const OutMsgBuffer& msg, std::string& error)
{
    std::vector<uint8_t> bytes{msg::StartByte};
    const std::vector<uint8_t> body = frameBody(msg);
    bytes.insert(bytes.end(), body.begin(), body.end());
    if (io_.write(bytes, error)) return true;
    error = "cannot write to " + portName_ + ": " + error;
    return false;
}

bool MemorySession::pump(int timeoutMs, const std::function<bool()>& done, std::string& error)
{
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!done()) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0) return true;
        std::vector<uint8_t> bytes;
        if (!io_.read(bytes, static_cast<int>(std::min<long long>(left, 100)), error)) {
            // NOLINTNEXTLINE(performance-inefficient-string-concatenation): once, on the way out
            error = "cannot read from " + portName_ + ": " + error;
            return false;
        }
        receiver_.receiveBytes(bytes);
    }
    return true;
}

bool MemorySession::detectTarget(int timeoutMs, std::string& error)
{
    target_ = TargetKind::Unknown;
    if (!pump(
            timeoutMs, [this] { return target_ != TargetKind::Unknown; }, error))
        return false;
    if (target_ != TargetKind::Unknown) return true;
    error = "no telemetry from " + portName_ + " within " + durationText(timeoutMs);
    return false;
}

bool MemorySession::sendAxisSelect(std::string& error)
{
    OutMsgBuffer out{};
    buildAxisSelect(out, axis_);
    return send(out, error);
}

int MemorySession::transferredElements() const { return targetIsQVane() ? layout::RelayedBytes : layout::DirectBytes; }

bool MemorySession::readMemory(MemoryImage& image, int timeoutMs, int attempts, std::string& error)
{
    shortReplies_ = 0;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        reply_ = image;
        gotMemory_ = false;
        awaitingMemory_ = true;
        OutMsgBuffer out{};
        buildReadRequest(out, targetIsQVane(), axis_);
        const int shortBefore = shortReplies_;
        const bool ok =
            send(out, error) && pump(
                                    timeoutMs, [&] { return gotMemory_ || shortReplies_ != shortBefore; }, error);
        awaitingMemory_ = false;
        if (!ok) return false;
        if (gotMemory_) {
            image = reply_;
            return true;
        }
    }
    if (shortReplies_ > 0) {
        // The payload a reply needs: the memory bytes, and through a Q-Vane the two
        // firmware version bytes after them.
        const int expected = targetIsQVane() ? layout::RelayedBytes + 2 : layout::DirectBytes;
        error = "short memory reply (" + std::to_string(shortReplyBytes_) + " of " + std::to_string(expected) +
                " bytes) from " + portName_;
    } else {
        error = "no memory contents from " + portName_ + " within " + durationText(timeoutMs);
    }
    if (attempts > 1) error += " (asked " + std::to_string(attempts) + " times)";
    return false;
}

bool MemorySession::writeMemory(const MemoryImage& image, std::string& error)
{
    OutMsgBuffer out{};
    buildWriteMessage(out, image, targetIsQVane(), axis_);
    return send(out, error);
}

void MemorySession::PutCyclicMsg(const MsgView&)
{
    if (target_ == TargetKind::Unknown) target_ = TargetKind::Direct;
}

void MemorySession::PutCyclicQvaneMsg(const MsgView&)
{
    if (target_ == TargetKind::Unknown) target_ = TargetKind::QVane;
}

void MemorySession::PutMemoryMsg(const MsgView& msg)
{
    if (!awaitingMemory_ || targetIsQVane()) return;
    // Copied aside first: a short reply raises the subscript error part way and must
    // not count as a read. It is caught here so the receiver's guard is not left set.
    MemoryImage copy = reply_;
    try {
        ::kdx::PutMemoryMsg(copy, msg);
    } catch (const HostError&) {
        ++shortReplies_;
        shortReplyBytes_ = msg.length() - 3;
        return;
    }
    reply_ = copy;
    gotMemory_ = true;
}

void MemorySession::PutAxisMemoryMsg(const MsgView& msg)
{
    if (!awaitingMemory_ || !targetIsQVane() || msg.id() != memoryReplyId(true, axis_)) return;
    MemoryImage copy = reply_;
    try {
        version_ = ::kdx::PutAxisMemoryMsg(copy, msg);
    } catch (const HostError&) {
        ++shortReplies_;
        shortReplyBytes_ = msg.length() - 3;
        return;
    }
    reply_ = copy;
    gotMemory_ = true;
}

} // namespace kdx
