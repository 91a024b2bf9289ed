#pragma once
// The module's configuration memory as the tool holds it: 65 16-bit elements, each
// normally one byte. Motor m's block is elements 30*m .. 30*m + 29, element 60 the
// checksum, 61 .. 64 carried and never interpreted.
#include "config/memory_layout.h"

#include <array>
#include <cstdint>

namespace kdx {

using MemoryImage = std::array<int16_t, layout::ImageSize>;

// Sum of elements 0 .. 59, reduced modulo 256 after every addition. It includes the
// elements no parameter owns.
int16_t imageChecksum(const MemoryImage& image);

} // namespace kdx
