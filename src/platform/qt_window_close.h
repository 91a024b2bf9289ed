#pragma once
// The close box of a window that lives as long as the program: until the program
// unloads the window, closing it runs `instead` (hide, or ask to quit) and the close is
// cancelled; once unloading, the close goes ahead.
#include <QCloseEvent>

namespace kdx {

template <class Instead>
void closeUnlessUnloading(QCloseEvent* event, bool unloading, Instead&& instead)
{
    if (unloading) {
        event->accept();
        return;
    }
    event->ignore();
    instead();
}

} // namespace kdx
