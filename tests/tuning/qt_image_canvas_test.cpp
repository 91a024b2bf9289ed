#include "core/colour.h"
#include "tuning/qt_image_canvas.h"

#include <gtest/gtest.h>

using namespace kdx;

// On a high-density screen the graph is drawn in device pixels: a one-pixel trace is one
// device pixel wide, and a slope steps in device pixels, not in doubled blocks.
TEST(QtImageCanvas, DrawsSharpAtDevicePixelRatioTwo)
{
    QtImageCanvas canvas;
    canvas.resize(20, 10, 2.0);
    EXPECT_EQ(canvas.width(), 20);
    EXPECT_EQ(canvas.height(), 10);
    const QImage& before = canvas.image();
    ASSERT_EQ(before.size(), QSize(40, 20));
    const QRgb back = before.pixel(0, 0);
    canvas.line(0, 0, 3, 0, colours::Green, 1); // horizontal, logical (0,0) to (3,0)
    canvas.line(0, 5, 2, 6, colours::Green, 1); // a shallow slope
    const QImage& img = canvas.image();
    const QRgb green = qRgb(0, 255, 0);
    for (int x = 0; x <= 6; ++x) {
        EXPECT_EQ(img.pixel(x, 0), green) << x;
        EXPECT_EQ(img.pixel(x, 1), back) << x << ": one device pixel thick";
    }
    EXPECT_EQ(img.pixel(7, 0), back);
    // (0,10) to (4,12) in device pixels: one pixel per column, stepping a row at a time,
    // where a doubled drawing would give 2 x 2 blocks.
    const int rows[] = {10, 11, 11, 12, 12};
    for (int x = 0; x < 5; ++x) {
        EXPECT_EQ(img.pixel(x, rows[x]), green) << x;
        for (int y = 9; y <= 13; ++y) {
            if (y != rows[x]) {
                EXPECT_EQ(img.pixel(x, y), back) << x << "," << y;
            }
        }
    }
    // The repaint area is in logical pixels: x up to 3, and the stroke's reach of 1.5.
    EXPECT_EQ(canvas.takeDirty().right(), 5);
}
