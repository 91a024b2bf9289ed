#pragma once
// Every event handler runs through guarded(): a host error (overflow, subscript,
// division by zero) abandons that handler and nothing else. What the handler changed
// before the fault stays changed, and the program keeps running.
#include "core/host_error.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <utility>

namespace kdx {

// Abandoned handlers are silent (noise on the wire is not news) unless KDX_DEBUG is set.
inline void reportAbandoned(const char* what)
{
    static const bool verbose = std::getenv("KDX_DEBUG") != nullptr;
    if (verbose) std::fprintf(stderr, "kdxtool: handler abandoned: %s\n", what);
}

template <typename F>
void guarded(F&& handler) noexcept
{
    try {
        std::forward<F>(handler)();
    } catch (const HostError& e) {
        reportAbandoned(e.what());
    } catch (const std::bad_alloc&) {
        reportAbandoned("out of memory");
    } catch (const std::exception& e) {
        reportAbandoned(e.what());
    }
}

} // namespace kdx
