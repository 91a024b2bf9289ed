#include "windows/debug_display_window.h"

#include "fakes/manual_clock.h"

#include <QCheckBox>
#include <QLabel>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

using namespace kdx;

namespace {

long columns(const std::string& s) { return std::count(s.begin(), s.end(), ',') + 1; }

std::string shown(const DebugDisplay& d)
{
    std::string s;
    for (QLabel* l : d.DebugValuelb) s += l->text().toStdString() + "|";
    return s;
}

void fire(QTimer* timer)
{
    ASSERT_TRUE(timer->isActive());
    timer->stop();
    QMetaObject::invokeMethod(timer, "timeout");
}

} // namespace

TEST(DebugDisplayWindow, LabelsFollowTheDataAtMostEveryFiftyMillisecondsAndOnlyWhileShown)
{
    test::ManualClock clock;
    DebugDisplay d(clock);
    d.Form_Load();
    auto* refresh = d.findChild<QTimer*>("RefreshTmr");
    ASSERT_NE(refresh, nullptr);
    EXPECT_EQ(d.DebugTitlelb[1]->text(), "HSL Flags");
    EXPECT_EQ(d.DebugTitlelb[2]->text(), "Gimbal Tilt");

    d.PutDebugData({1, 2, 3, 4, 5, 6, 7}); // hidden: stored, nothing painted
    EXPECT_EQ(shown(d), "-|-|-|-|-|-|-|");
    EXPECT_FALSE(refresh->isActive());
    EXPECT_EQ(d.GetDebugStrToLog(), "1,2,3,4,5,6,7");

    d.show(); // catches up at once
    EXPECT_EQ(shown(d), "1 (0x01)|2 (0x02)|3 (0x03)|4 (0x04)|5 (0x05)|6 (0x06)|7 (0x07)|");

    d.PutDebugData({0, 15, 255, 4, 5, 6, 7});
    d.PutDebugData({0, 15, 255, 4, 5, 6, 8});
    EXPECT_EQ(d.DebugValuelb[6]->text(), "7 (0x07)"); // not within 50 ms of the last refresh
    fire(refresh);
    EXPECT_EQ(shown(d), "0 (0x00)|15 (0x0F)|255 (0xFF)|4 (0x04)|5 (0x05)|6 (0x06)|8 (0x08)|");
    clock.now += 50'000'000;
    d.PutDebugData({0, 15, 255, 4, 5, 6, 9}); // 50 ms on: shown by the data itself
    EXPECT_EQ(d.DebugValuelb[6]->text(), "9 (0x09)");
    EXPECT_FALSE(refresh->isActive());

    EXPECT_FALSE(d.close()); // the close box hides
    EXPECT_FALSE(d.isVisible());
    d.PutDebugData({9, 9, 9, 9, 9, 9, 9});
    EXPECT_FALSE(refresh->isActive());
    EXPECT_EQ(d.DebugValuelb[0]->text(), "0 (0x00)");
    EXPECT_EQ(d.GetDebugStrToLog(), "9,9,9,9,9,9,9");
}

TEST(DebugDisplayWindow, TheCheckBoxAsksForTheColumns)
{
    DebugDisplay d;
    d.show();
    EXPECT_FALSE(d.GetLogDebugData());
    QTest::mouseClick(d.LogDebugcb, Qt::LeftButton);
    EXPECT_TRUE(d.GetLogDebugData());
    EXPECT_EQ(columns(d.GetDebugTitles()), columns(d.GetDebugStrToLog()));
}
