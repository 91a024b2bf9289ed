#include "widgets/face_colour.h"

#include "core/colour.h"

#include <QApplication>
#include <QPointer>
#include <QProxyStyle>
#include <QStyleFactory>
#include <QStyleOption>

#include <map>
#include <vector>

namespace kdx {

namespace {

// One kept copy of each palette faces are drawn with, by face colour. The system has a
// handful of face colours and a face a handful of looks (enabled, disabled, focused),
// so a colour keeps its few latest palettes and nothing grows.
class KeptPalettes {
public:
    // The kept palette equal to `p`; `p` itself the first time it is seen.
    const QPalette& kept(const QPalette& p)
    {
        std::vector<QPalette>& list = byColour_[p.color(QPalette::Button).rgba()];
        for (const QPalette& k : list)
            if (k == p) return k;
        if (list.size() >= kPerColour) list.erase(list.begin());
        list.push_back(p);
        return list.back();
    }

private:
    static constexpr std::size_t kPerColour = 8;
    std::map<QRgb, std::vector<QPalette>> byColour_;
};

// The application's style, drawing buttons with the kept palettes: what it caches under
// a palette's identity is then cached once per look, not once per change of colour.
class FaceStyle : public QProxyStyle {
public:
    using QProxyStyle::QProxyStyle;

    void drawPrimitive(PrimitiveElement e, const QStyleOption* o, QPainter* p, const QWidget* w) const override
    {
        QStyleOptionButton copy;
        QProxyStyle::drawPrimitive(e, withKeptPalette(o, copy), p, w);
    }
    void drawControl(ControlElement e, const QStyleOption* o, QPainter* p, const QWidget* w) const override
    {
        QStyleOptionButton copy;
        QProxyStyle::drawControl(e, withKeptPalette(o, copy), p, w);
    }

private:
    // A button's option with its palette swapped for the kept equal one; any other
    // option, or one that has the kept palette already, as it is.
    const QStyleOption* withKeptPalette(const QStyleOption* o, QStyleOptionButton& copy) const
    {
        const auto* button = qstyleoption_cast<const QStyleOptionButton*>(o);
        if (!button) return o;
        const QPalette& kept = palettes_.kept(button->palette);
        if (kept.cacheKey() == button->palette.cacheKey()) return o;
        copy = *button;
        copy.palette = kept;
        copy.palette.setCurrentColorGroup(button->palette.currentColorGroup());
        return &copy;
    }

    mutable KeptPalettes palettes_;
};

QStyle* faceStyle()
{
    static QPointer<FaceStyle> style;
    if (!style) {
        style = new FaceStyle(QStyleFactory::create(QApplication::style()->name()));
        style->setParent(qApp); // gone with the application, after every window
    }
    return style;
}

} // namespace

void paintFace(QWidget* w, uint32_t bgr)
{
    const Rgb c = fromBgr(bgr);
    const QColor colour(c.r, c.g, c.b);
    QStyle* style = faceStyle();
    if (w->style() != style) w->setStyle(style);
    const QPalette& now = w->palette();
    if (w->autoFillBackground() && now.color(QPalette::Button) == colour && now.color(QPalette::Window) == colour)
        return;
    QPalette p = now;
    p.setColor(QPalette::Button, colour);
    p.setColor(QPalette::Window, colour);
    p.setColor(QPalette::ButtonText, Qt::black);
    p.setColor(QPalette::WindowText, Qt::black);
    w->setAutoFillBackground(true);
    w->setPalette(p);
}

} // namespace kdx
