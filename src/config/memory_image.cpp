#include "config/memory_image.h"

namespace kdx {

int16_t imageChecksum(const MemoryImage& image)
{
    int sum = 0;
    for (int i = 0; i < layout::ImageChecksum; ++i) sum = (sum + image[static_cast<std::size_t>(i)]) % 256;
    return static_cast<int16_t>(sum);
}

} // namespace kdx
