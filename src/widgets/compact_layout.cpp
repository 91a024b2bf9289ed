#include "widgets/compact_layout.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QLayout>
#include <QMainWindow>
#include <QScrollArea>
#include <QWidget>

#include <algorithm>

namespace kdx {

namespace {

void compact(QLayout* layout, int spacing)
{
    if (auto* grid = qobject_cast<QGridLayout*>(layout)) {
        grid->setVerticalSpacing(spacing);
        grid->setHorizontalSpacing(std::max(grid->horizontalSpacing(), 2 * spacing));
    } else {
        layout->setSpacing(spacing);
    }
    for (int i = 0; i < layout->count(); ++i)
        if (QLayout* inner = layout->itemAt(i)->layout()) compact(inner, spacing);
}

} // namespace

void compactLayouts(QWidget* root, int spacing, int margin)
{
    for (QWidget* w : root->findChildren<QWidget*>()) {
        QLayout* layout = w->layout();
        if (!layout) continue;
        compact(layout, spacing);
        if (qobject_cast<QGroupBox*>(w)) layout->setContentsMargins(margin, margin / 2, margin, margin / 2);
    }
}

void allowScrolling(QMainWindow* window)
{
    QWidget* central = window->takeCentralWidget();
    auto* scroll = new QScrollArea(window);
    scroll->setObjectName("scrollArea");
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true); // the controls grow with the window as before
    scroll->setWidget(central);
    window->setCentralWidget(scroll);
}

} // namespace kdx
