#include "sim/inbound_parser.h"

#include "link/message_ids.h"

namespace kdx::sim {

bool InboundParser::push(uint8_t byte)
{
    if (!inSync_) {
        if (byte == msg::StartByte) {
            inSync_ = true;
            index_ = 0;
        }
        return false;
    }
    if (index_ == 0) {
        if (byte < msg::MinLength) {
            inSync_ = false;
            return false;
        }
        length_ = byte;
        buf_[0] = byte;
        index_ = 1;
        return false;
    }
    buf_[index_] = byte;
    if (index_ + 1 < length_) {
        ++index_;
        return false;
    }
    inSync_ = false;
    unsigned sum = 0;
    for (std::size_t i = 0; i + 1 < length_; ++i) sum += buf_[i];
    if ((sum & 0xFF) != buf_[length_ - 1]) {
        ++bad_;
        return false;
    }
    return true;
}

} // namespace kdx::sim
