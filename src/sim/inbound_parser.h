#pragma once
// The module's side of the framing: rebuilds the frames the tool sends, one byte at a
// time, and passes on only those whose checksum is right. Like the tool's receiver it
// hunts for the start byte, abandons a length below 3 and never rescans a rejected
// frame; unlike it, it takes only the plain sum, which is all the tool ever sends.
#include <array>
#include <cstdint>
#include <span>

namespace kdx::sim {

class InboundParser {
public:
    // Takes one byte; true when it completed a good frame, which message() then holds.
    bool push(uint8_t byte);
    // The last good frame without its start byte: length, identifier, payload, checksum.
    std::span<const uint8_t> message() const { return {buf_.data(), length_}; }
    void reset() { inSync_ = false; }
    uint64_t badFrames() const { return bad_; }

private:
    std::array<uint8_t, 256> buf_{};
    bool inSync_ = false;
    std::size_t length_ = 0;
    std::size_t index_ = 0;
    uint64_t bad_ = 0;
};

} // namespace kdx::sim
