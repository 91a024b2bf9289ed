#include "widgets/stale_look.h"

#include <QApplication>
#include <QColor>
#include <QPalette>
#include <QVariant>
#include <QWidget>

namespace kdx {

namespace {
constexpr const char* kStaleProperty = "kdxStale";
} // namespace

QColor staleTextColour(const QPalette& palette)
{
    const QColor text = palette.color(QPalette::WindowText);
    const QColor back = palette.color(QPalette::Window);
    return QColor((text.red() + back.red()) / 2, (text.green() + back.green()) / 2, (text.blue() + back.blue()) / 2);
}

void showStale(QWidget* w, bool stale)
{
    if (w->property(kStaleProperty).toBool() == stale) return;
    w->setProperty(kStaleProperty, stale);
    QPalette p = w->palette();
    // Fresh text takes the colour the widget would have without this change: that of its
    // parent (or the application), whatever palette is current.
    const QPalette base = w->parentWidget() ? w->parentWidget()->palette() : QApplication::palette(w);
    const QColor text = stale ? staleTextColour(base) : base.color(QPalette::WindowText);
    for (QPalette::ColorGroup g : {QPalette::Active, QPalette::Inactive}) p.setColor(g, QPalette::WindowText, text);
    w->setPalette(p);
}

} // namespace kdx
