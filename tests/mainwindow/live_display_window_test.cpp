#include "fakes/program_rig.h"
#include "telemetry/cyclic_frames.h"
#include "widgets/click_label.h"

#include <QApplication>
#include <QLabel>
#include <QPalette>
#include <QPushButton>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace kdx;
using namespace kdx::test;

namespace {

std::vector<uint8_t> directWithPower(int powerByte) { return CyclicBytes::direct().byte(14, powerByte).frame(); }

QColor textOf(const QWidget* w) { return w->palette().color(QPalette::WindowText); }

// WCAG contrast ratio of two colours.
double contrast(const QColor& a, const QColor& b)
{
    const auto lum = [](const QColor& c) {
        const auto lin = [](double v) { return v <= 0.03928 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); };
        return 0.2126 * lin(c.redF()) + 0.7152 * lin(c.greenF()) + 0.0722 * lin(c.blueF());
    };
    const double la = lum(a), lb = lum(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

} // namespace

// The labels follow the latest message on the display timer, not at every message; the
// log and the samples still take each one (covered by their own tests).
TEST(LiveDisplayWindow, LabelsShowTheLatestValueWhenTheDisplayTimerFires)
{
    ProgramRig r;
    r.deliverAndShow(directWithPower(0));
    ASSERT_EQ(r.main.AxisPowertb[0]->text(), "OFF");
    r.port.deliver(directWithPower(128));
    r.port.deliver(directWithPower(64));
    EXPECT_EQ(r.main.AxisPowertb[0]->text(), "OFF"); // not yet: the timer has not fired
    auto* timer = r.main.findChild<QTimer*>("liveDisplayTimer");
    ASSERT_NE(timer, nullptr);
    EXPECT_TRUE(timer->isActive());
    EXPECT_EQ(timer->interval(), 50);
    r.flushDisplay();
    EXPECT_EQ(r.main.AxisPowertb[0]->text(), "25%"); // the latest: 64 is a quarter
}

// When the watchdog declares the link lost, every live value greys; the next message
// shows them fresh again. Nothing else changes: the texts stay.
TEST(LiveDisplayWindow, LiveValuesGreyOnLinkLossAndRecoverOnTheNextMessage)
{
    struct Case {
        const char* name;
        QColor text, window, stale;
    };
    const Case cases[] = {
        {"light", QColor(0, 0, 0), QColor(255, 255, 255), QColor(127, 127, 127)},
        {"dark", QColor(255, 255, 255), QColor(32, 32, 32), QColor(143, 143, 143)},
    };
    const QPalette before = QApplication::palette();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        QPalette p = before;
        p.setColor(QPalette::WindowText, c.text);
        p.setColor(QPalette::Window, c.window);
        QApplication::setPalette(p);
        ProgramRig r;
        r.debug.show();
        r.deliverAndShow(directWithPower(128));
        const std::vector<QWidget*> live{r.main.AxisPowertb[0], r.main.AxisRatetb[1], r.main.ElecAngletb[0],
                                         r.main.Voltagetb,      r.main.Switchtb,      r.debug.DebugValuelb[0]};
        for (QWidget* w : live) EXPECT_EQ(textOf(w), c.text) << w->objectName().toStdString();

        r.comms.CommsTimeout_Timer(); // takes the count
        for (QWidget* w : live) EXPECT_EQ(textOf(w), c.text) << w->objectName().toStdString();
        r.comms.CommsTimeout_Timer(); // nothing since: the link is lost
        for (QWidget* w : live) {
            EXPECT_EQ(textOf(w), c.stale) << w->objectName().toStdString();
            EXPECT_GE(contrast(textOf(w), c.window), 3.0) << w->objectName().toStdString();
        }
        EXPECT_EQ(r.main.AxisPowertb[0]->text(), "50%");
        EXPECT_EQ(r.main.TestDrivecb[0]->palette().color(QPalette::ButtonText), QColor(Qt::black));

        r.deliverAndShow(directWithPower(128));
        for (QWidget* w : live) EXPECT_EQ(textOf(w), c.text) << w->objectName().toStdString();
    }
    QApplication::setPalette(before);
}
