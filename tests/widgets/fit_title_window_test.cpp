#include "widgets/fit_title.h"

#include <QInputDialog>
#include <QMessageBox>
#include <gtest/gtest.h>

#include <cstring>

using namespace kdx;

// A short prompt under a long title: the box is as wide as its title bar needs, so the
// title is not cut off.
TEST(FitTitle, BoxesAreWideEnoughForTheirTitles)
{
    struct Case {
        const char* title;
        const char* prompt;
    };
    const Case cases[] = {
        {"Brushless Motor Drive Parameter Entry", "0 - 100"},
        {"Tuning Data Modified", "Still Quit ?"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.title);
        QMessageBox box;
        box.setWindowTitle(c.title);
        box.setText(c.prompt);
        fitTitle(&box);
        box.show();
        EXPECT_GE(box.width(), titleBarWidth(&box));
        EXPECT_GT(titleBarWidth(&box), 140 + 5 * static_cast<int>(std::strlen(c.title))); // grows with the title

        QInputDialog input;
        input.setWindowTitle(c.title);
        input.setLabelText(c.prompt);
        fitTitle(&input);
        input.show();
        EXPECT_GE(input.width(), titleBarWidth(&input));
    }
}
