#include "link/frame.h"

#include "core/host_numeric.h"
#include "link/message_ids.h"

namespace kdx {

int16_t MsgView::operator[](long long i) const
{
    if (i < 0 || i >= length_) raiseSubscript();
    return (*buf_)[static_cast<std::size_t>(i)];
}

std::vector<uint8_t> frameBody(const OutMsgBuffer& msg)
{
    std::vector<uint8_t> out;
    const int length = msg[0];
    if (length < 0 || length > 255) raiseOverflow();
    if (length < msg::MinLength) return out;
    out.reserve(static_cast<std::size_t>(length));
    for (int i = 0; i < length; ++i) out.push_back(static_cast<uint8_t>(msg[i] & 0xFF));
    return out;
}

void putChecksum(OutMsgBuffer& msg)
{
    const int length = msg[0];
    int sum = 0;
    for (int i = 0; i < length - 1; ++i) sum = (sum + msg[i]) & 0xFF;
    msg[length - 1] = static_cast<int16_t>(sum);
}

std::vector<uint8_t> buildFrame(int id, const std::vector<uint8_t>& payload, bool invertChecksum)
{
    std::vector<uint8_t> out;
    const int length = static_cast<int>(payload.size()) + 3;
    out.reserve(payload.size() + 4);
    out.push_back(msg::StartByte);
    out.push_back(static_cast<uint8_t>(length));
    out.push_back(static_cast<uint8_t>(id));
    out.insert(out.end(), payload.begin(), payload.end());
    unsigned sum = 0;
    for (std::size_t i = 1; i < out.size(); ++i) sum += out[i];
    sum &= 0xFF;
    out.push_back(static_cast<uint8_t>(invertChecksum ? (~sum & 0xFF) : sum));
    return out;
}

} // namespace kdx
