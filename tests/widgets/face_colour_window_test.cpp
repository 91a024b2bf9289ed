#include "core/colour.h"
#include "fakes/heap_in_use.h"
#include "widgets/face_colour.h"

#include <QImage>
#include <QPixmapCache>
#include <QPushButton>
#include <gtest/gtest.h>

using namespace kdx;
using namespace kdx::test;

namespace {

QImage rendered(QWidget& w)
{
    QImage image(w.size(), QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    w.render(&image);
    return image;
}

} // namespace

TEST(FaceColourWindow, AFaceLooksAsItsColourSays)
{
    struct Case {
        uint32_t bgr;
        QColor colour;
        bool enabled;
    };
    const Case cases[] = {{colours::Green, QColor(0, 255, 0), true},
                          {colours::Red, QColor(255, 0, 0), true},
                          {colours::LightGrey, QColor(192, 192, 192), false}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.colour.name().toStdString());
        QPushButton painted("Start"), plain("Start");
        for (QPushButton* b : {&painted, &plain}) {
            b->resize(90, 30);
            b->setEnabled(c.enabled);
        }
        paintFace(&painted, colours::White); // an earlier colour leaves no trace
        paintFace(&painted, c.bgr);
        QPalette p = plain.palette();
        for (auto role : {QPalette::Button, QPalette::Window}) p.setColor(role, c.colour);
        for (auto role : {QPalette::ButtonText, QPalette::WindowText}) p.setColor(role, Qt::black);
        plain.setAutoFillBackground(true);
        plain.setPalette(p);
        const QImage face = rendered(painted);
        EXPECT_EQ(face.pixelColor(10, 15).hsvHue(), c.colour.hsvHue()) << "the face beside the caption";
        EXPECT_EQ(face, rendered(plain)) << "drawn as the style draws such a palette";
    }
}

// Each change of colour once left a new copy of the face in the style's pixmap cache.
TEST(FaceColourWindow, AFaceChangingColourForHoursKeepsNoNewPixmaps)
{
    QPushButton button("Start");
    button.resize(120, 40);
    auto changeTwice = [&] {
        for (uint32_t bgr : {colours::Green, colours::LightGrey}) {
            paintFace(&button, bgr);
            rendered(button);
        }
    };
    QPixmapCache::clear();
    changeTwice(); // each look drawn and cached once
    const std::size_t before = heapInUse();
    for (int n = 0; n < 400; ++n) changeTwice();
    const double grownKb = (static_cast<double>(heapInUse()) - static_cast<double>(before)) / 1024.0;
    // 800 new faces of 120 x 40 pixels would be over 10 MB (up to the cache's limit).
    EXPECT_LT(grownKb, 512.0);
}
