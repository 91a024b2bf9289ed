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

// The labels follow the latest message 20 times a second: a message that finds the last
// refresh 45 ms old shows itself, one that comes sooner waits for the next such message
// or, once messages stop, for the display timer 50 ms after the first message that waited.
// The log and the samples still take each message (covered by their own tests).
TEST(LiveDisplayWindow, LabelsFollowTheLatestMessageTwentyTimesASecondAndAtMostFiftyMillisecondsBehind)
{
    struct Step {
        int64_t afterMs; // simulated time since the step before
        int power;       // the power byte of a message sent then, or -1 for none
        const char* shown;
    };
    const Step steps[] = {
        {0, 0, "OFF"},     // the first message finds no refresh at all
        {10, 128, "OFF"},  // 10 ms after the refresh: waits
        {30, 64, "OFF"},   // 40 ms: still waits, and the latest value replaces the one waiting
        {10, 192, "75%"},  // 50 ms: this message shows itself
        {10, 0, "75%"},    // a new wait begins
        {49, -1, "75%"},   // no message since: 49 ms into the wait, the timer is not due yet
        {1, -1, "OFF"},    // 50 ms: the timer shows the last one
        {200, 128, "50%"}, // after a quiet spell a message shows at once
        {44, 64, "50%"},   // 44 ms after the refresh: too soon
        {1, 192, "75%"},   // 45 ms: soon enough to show itself
    };
    ProgramRig r;
    int i = 0;
    for (const Step& s : steps) {
        SCOPED_TRACE(i++);
        r.advance(s.afterMs);
        if (s.power >= 0) r.port.deliver(directWithPower(s.power));
        EXPECT_EQ(r.main.AxisPowertb[0]->text(), s.shown);
    }
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
