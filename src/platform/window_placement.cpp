#include "platform/window_placement.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace kdx {

long long overlapArea(const PlaceRect& a, const PlaceRect& b)
{
    const long long w = std::min(a.right(), b.right()) - std::max(a.x, b.x);
    const long long h = std::min(a.bottom(), b.bottom()) - std::max(a.y, b.y);
    return w > 0 && h > 0 ? w * h : 0;
}

namespace {

long long overlapWith(const PlaceRect& r, std::span<const PlaceRect> taken)
{
    long long sum = 0;
    for (const PlaceRect& t : taken) sum += overlapArea(r, t);
    return sum;
}

// Candidate top-left corners: the area's, and beside or below each window already up,
// level with it and with the area's edge.
std::vector<std::pair<int, int>> spots(const PlaceRect& area, std::span<const PlaceRect> taken)
{
    std::vector<std::pair<int, int>> s{{area.x, area.y}};
    for (const PlaceRect& t : taken) {
        s.emplace_back(t.right(), t.y);
        s.emplace_back(t.right(), area.y);
        s.emplace_back(t.x, t.bottom());
        s.emplace_back(area.x, t.bottom());
    }
    std::sort(s.begin(), s.end(),
              [](auto a, auto b) { return a.second != b.second ? a.second < b.second : a.first < b.first; });
    return s;
}

// The largest rectangle from (x, y), at most w x h, that stays in the area and clear of
// `taken`; none when the corner itself is covered.
std::optional<PlaceRect> clearFrom(const PlaceRect& area, std::span<const PlaceRect> taken, int x, int y, int w, int h)
{
    PlaceRect r{x, y, std::min(w, area.right() - x), std::min(h, area.bottom() - y)};
    if (r.w <= 0 || r.h <= 0) return std::nullopt;
    for (const PlaceRect& t : taken) {
        if (overlapArea(r, t) == 0) continue;
        // Cut the side that loses less.
        const int keepW = t.x - r.x, keepH = t.y - r.y;
        const long long byW = keepW > 0 ? static_cast<long long>(keepW) * r.h : -1;
        const long long byH = keepH > 0 ? static_cast<long long>(r.w) * keepH : -1;
        if (byW < 0 && byH < 0) return std::nullopt;
        if (byW >= byH) r.w = keepW;
        else r.h = keepH;
    }
    return r;
}

} // namespace

PlaceRect placeWindow(const PlaceRect& area, std::span<const PlaceRect> taken, const WindowSize& size)
{
    const int w = std::clamp(size.w, 0, area.w);
    const int h = std::clamp(size.h, 0, area.h);
    const auto candidates = spots(area, taken);
    // Whole and clear.
    for (auto [x, y] : candidates) {
        const PlaceRect r{std::clamp(x, area.x, area.right() - w), std::clamp(y, area.y, area.bottom() - h), w, h};
        if (overlapWith(r, taken) == 0) return r;
    }
    // Cut down, clear: the largest.
    std::optional<PlaceRect> best;
    for (auto [x, y] : candidates) {
        const auto r = clearFrom(area, taken, x, y, w, h);
        if (!r || r->w < size.minW || r->h < size.minH) continue;
        if (!best || static_cast<long long>(r->w) * r->h > static_cast<long long>(best->w) * best->h) best = r;
    }
    if (best) return *best;
    // Whole, overlapping least.
    PlaceRect least;
    long long leastOverlap = std::numeric_limits<long long>::max();
    for (auto [x, y] : candidates) {
        const PlaceRect r{std::clamp(x, area.x, area.right() - w), std::clamp(y, area.y, area.bottom() - h), w, h};
        const long long o = overlapWith(r, taken);
        if (o < leastOverlap) {
            least = r;
            leastOverlap = o;
        }
    }
    return least;
}

std::vector<PlaceRect> placeWindows(const PlaceRect& area, std::span<const WindowSize> sizes)
{
    std::vector<PlaceRect> placed;
    for (const WindowSize& s : sizes) placed.push_back(placeWindow(area, placed, s));
    return placed;
}

} // namespace kdx
