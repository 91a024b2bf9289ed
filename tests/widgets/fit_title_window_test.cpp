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
        box.setText(c.prompt);
        QInputDialog input;
        input.setLabelText(c.prompt);
        for (QWidget* dialog : {static_cast<QWidget*>(&box), static_cast<QWidget*>(&input)}) {
            dialog->setWindowTitle(c.title);
            fitTitle(dialog);
            dialog->show();
            EXPECT_GE(dialog->width(), titleBarWidth(dialog)) << dialog->metaObject()->className();
        }
        EXPECT_GT(titleBarWidth(&box), 140 + 5 * static_cast<int>(std::strlen(c.title))); // grows with the title
    }
}
