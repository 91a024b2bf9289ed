#include "fakes/program_rig.h"
#include "telemetry/cyclic_frames.h"

#include <QMenuBar>
#include <gtest/gtest.h>

using namespace kdx;
using namespace kdx::test;

// On a 1366 x 768 laptop screen (less a 28-pixel panel) the three windows a module brings
// up lie inside the free area and over none of one another, and the main window with its
// menu is at most 700 pixels high.
TEST(WindowPlacementWindow, WorkingWindowsFitApartOnASmallScreen)
{
    ProgramRig r;
    const QRect area(0, 28, 1366, 740);
    r.program.placeWorkingWindows(area);
    r.port.deliver(CyclicBytes::direct().frame());
    const QWidget* windows[] = {&r.main, &r.logging, &r.graph};
    for (const QWidget* w : windows) {
        ASSERT_TRUE(w->isVisible()) << w->objectName().toStdString();
        EXPECT_TRUE(area.contains(w->frameGeometry())) << w->objectName().toStdString();
        for (const QWidget* other : windows) {
            if (other == w) continue;
            EXPECT_FALSE(w->frameGeometry().intersects(other->frameGeometry()))
                << w->objectName().toStdString() << " over " << other->objectName().toStdString();
        }
    }
    EXPECT_LE(r.main.height(), 700) << "menu " << r.main.menuBar()->height();
}
