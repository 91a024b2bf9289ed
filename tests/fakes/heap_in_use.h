#pragma once
// Bytes the heap holds for the program right now: the sanitizer's own count in an
// AddressSanitizer build, glibc's otherwise.
#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define KDX_TEST_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KDX_TEST_ASAN 1
#endif
#endif
#ifdef KDX_TEST_ASAN
#include <sanitizer/allocator_interface.h>
#else
#include <malloc.h>
#endif

namespace kdx::test {

inline std::size_t heapInUse()
{
#ifdef KDX_TEST_ASAN
    return __sanitizer_get_current_allocated_bytes();
#else
    const struct mallinfo2 m = mallinfo2();
    return m.uordblks + m.hblkhd;
#endif
}

} // namespace kdx::test
