#include "widgets/fit_title.h"

#include <QApplication>
#include <QFontMetrics>
#include <QBoxLayout>
#include <QGridLayout>
#include <QSpacerItem>
#include <QWidget>

#include <algorithm>

namespace kdx {

namespace {
// The title bar's icon and its minimise, maximise and close buttons, as desktops
// commonly draw them.
constexpr int kTitleBarButtons = 140;
} // namespace

int titleBarWidth(const QWidget* window)
{
    QFont font = QApplication::font("QMdiSubWindowTitleBar");
    font.setBold(true); // many desktops draw titles bold
    return QFontMetrics(font).horizontalAdvance(window->windowTitle()) + kTitleBarButtons;
}

void fitTitle(QWidget* dialog)
{
    const int width = titleBarWidth(dialog);
    dialog->minimumSizeHint(); // an input box makes its layout when first asked its size
    // Message and input boxes size themselves from their layouts when shown, ignoring a
    // minimum width; a spacer in the layout is a width they keep.
    auto* spacer = new QSpacerItem(width, 0, QSizePolicy::Minimum, QSizePolicy::Fixed);
    if (auto* grid = qobject_cast<QGridLayout*>(dialog->layout()))
        grid->addItem(spacer, grid->rowCount(), 0, 1, grid->columnCount());
    else if (auto* box = qobject_cast<QBoxLayout*>(dialog->layout())) box->addSpacerItem(spacer);
    else {
        delete spacer;
        dialog->setMinimumWidth(std::max(dialog->minimumWidth(), width));
    }
}

} // namespace kdx
