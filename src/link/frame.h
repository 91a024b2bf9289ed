#pragma once
// Message buffers and the transmit framing.
#include <array>
#include <cstdint>
#include <vector>

namespace kdx {

// The shared outgoing buffer: element 0 the count L, element 1 the identifier, then the
// payload, element L-1 the checksum. Only the low 8 bits of each element travel, so a
// sender may leave the checksum unreduced.
using OutMsgBuffer = std::array<int16_t, 256>;

// The receive buffer: InBuf(0) = L ... InBuf(L-1) = checksum.
using InBuffer = std::array<int16_t, 256>;

// A complete received message as handed to consumers: the buffer and its length L.
// Reading an element at or beyond L raises the subscript error, so a message shorter
// than its layout abandons the handler that reads it.
class MsgView {
public:
    MsgView(const InBuffer& buf, int length) : buf_(&buf), length_(length) {}
    int16_t operator[](long long i) const;
    int length() const { return length_; }
    int id() const { return (*this)[1]; }

private:
    const InBuffer* buf_;
    int length_;
};

// What SendMessage writes after the start byte: the low bytes of elements 0 .. L-1, or
// nothing when L is below 3. An element 0 outside 0..255 raises the overflow error.
std::vector<uint8_t> frameBody(const OutMsgBuffer& msg);

// Fills the checksum element: sum of elements 0 .. L-2 reduced to 8 bits after each
// addition, as every sender but the bootloader restart does.
void putChecksum(OutMsgBuffer& msg);

// Builds a complete wire frame from identifier and payload (used by the simulated module
// and tests): 0x5A, L, id, payload..., checksum.
std::vector<uint8_t> buildFrame(int id, const std::vector<uint8_t>& payload, bool invertChecksum = false);

} // namespace kdx
