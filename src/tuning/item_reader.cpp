#include "tuning/item_reader.h"

#include "core/host_numeric.h"

#include <string_view>

namespace kdx {

std::optional<double> ItemReader::next()
{
    if (eof()) return std::nullopt;
    const std::size_t start = pos_;
    while (pos_ < bytes_.size() && bytes_[pos_] != ',' && bytes_[pos_] != '\r' && bytes_[pos_] != '\n') ++pos_;
    const std::string_view text(reinterpret_cast<const char*>(bytes_.data()) + start, pos_ - start);
    if (pos_ < bytes_.size()) {
        const uint8_t separator = bytes_[pos_++];
        if (separator == '\r' && pos_ < bytes_.size() && bytes_[pos_] == '\n') ++pos_;
    }
    return Val(text);
}

} // namespace kdx
