#pragma once
// Where a window goes when it first appears: inside the screen's available area and, where
// there is room, over none of the windows already up. Qt-free, in screen pixels.
#include <span>
#include <vector>

namespace kdx {

struct PlaceRect {
    int x = 0, y = 0, w = 0, h = 0;
    int right() const { return x + w; }  // one past the last column
    int bottom() const { return y + h; } // one past the last row
    bool operator==(const PlaceRect&) const = default;
};

// The pixels two rectangles share.
long long overlapArea(const PlaceRect& a, const PlaceRect& b);

// A window's wish: its size, and the least it can be cut down to (frames included).
struct WindowSize {
    int w = 0, h = 0;
    int minW = 0, minH = 0;
};

// A place for a window inside `area`, clear of the windows in `taken` where there is
// room: the topmost, then leftmost spot beside or below them (or at the area's top left)
// where it fits whole; else the largest cut-down size, no smaller than its minimum, that
// fits clear of them; else, whole, where it overlaps them least. Never larger than the area.
PlaceRect placeWindow(const PlaceRect& area, std::span<const PlaceRect> taken, const WindowSize& size);

// Places windows one after another, each clear of those before it where there is room.
std::vector<PlaceRect> placeWindows(const PlaceRect& area, std::span<const WindowSize> sizes);

} // namespace kdx
