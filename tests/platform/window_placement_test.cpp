#include "platform/window_placement.h"

#include <gtest/gtest.h>

#include <vector>

using namespace kdx;

namespace {

void expectInsideAndApart(const PlaceRect& area, const std::vector<PlaceRect>& placed)
{
    for (std::size_t i = 0; i < placed.size(); ++i) {
        const PlaceRect& r = placed[i];
        EXPECT_TRUE(r.x >= area.x && r.y >= area.y && r.right() <= area.right() && r.bottom() <= area.bottom())
            << "window " << i << " at " << r.x << "," << r.y << " " << r.w << "x" << r.h;
        for (std::size_t j = 0; j < i; ++j) EXPECT_EQ(overlapArea(r, placed[j]), 0) << i << " over " << j;
    }
}

} // namespace

// The main window, the log window and the tuning window as they come up together
// (frames included), on screens from a small laptop's up.
TEST(WindowPlacement, WorkingWindowsFitApartOnTheScreen)
{
    const std::vector<WindowSize> windows{{652, 710, 652, 600}, {384, 219, 300, 150}, {1004, 750, 500, 350}};
    struct Case {
        PlaceRect area;
        std::vector<PlaceRect> expected; // worked out by hand
    };
    const Case cases[] = {
        // 1366 x 768 less a 28-pixel panel: the tuning window is cut to what is left.
        {{0, 28, 1366, 740}, {{0, 28, 652, 710}, {652, 28, 384, 219}, {652, 247, 714, 521}}},
        // Full HD: all whole; the tuning window goes below the log window, beside the main one.
        {{0, 0, 1920, 1050}, {{0, 0, 652, 710}, {652, 0, 384, 219}, {652, 219, 1004, 750}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.area.w);
        const std::vector<PlaceRect> placed = placeWindows(c.area, windows);
        expectInsideAndApart(c.area, placed);
        EXPECT_EQ(placed, c.expected);
    }
}

// A window that cannot be cut down enough to fit clear stays whole and inside the area,
// where it hides the least; one larger than the screen is cut to it.
TEST(WindowPlacement, NoRoomLeftMeansLeastOverlapInsideTheArea)
{
    const PlaceRect area{0, 0, 800, 600};
    const std::vector<PlaceRect> taken{{0, 0, 500, 600}, {500, 0, 300, 400}};
    EXPECT_EQ(placeWindow(area, taken, {300, 300, 300, 300}), (PlaceRect{500, 300, 300, 300}));
    EXPECT_EQ(placeWindow(area, {}, {2000, 1500, 100, 100}), (PlaceRect{0, 0, 800, 600}));
}
