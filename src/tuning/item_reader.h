#pragma once
// Reads a text file as a stream of comma- and line-separated number items, the way the
// tuning files have always been read: each item is the longest leading number of its
// text (Val), a blank item reads 0, and an item ends at a comma, CR, LF or CR LF.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace kdx {

class ItemReader {
public:
    // The bytes are referenced, not copied.
    explicit ItemReader(std::span<const uint8_t> bytes) : bytes_(bytes) {}

    // The next item, or nothing when the input is already used up (reading past the
    // end). An item too large for a double raises the overflow error, as Val does.
    std::optional<double> next();
    // True once every byte, the last item's separator included, has been read.
    bool eof() const { return pos_ >= bytes_.size(); }

private:
    std::span<const uint8_t> bytes_;
    std::size_t pos_ = 0;
};

} // namespace kdx
