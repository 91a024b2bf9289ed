// The guided tuning panel: every way the user stops it puts their gains back in the very
// next gain message and leaves "Enab" as they had it; at the end the best gains go into
// the gain panel only when the user asks.
#include "tuning/gain_sender.h"
#include "tuning/guide_panel_window.h"
#include "tuning/tuning_fakes.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

using namespace kdx;
using namespace kdx::test;

namespace {

const GainSet kFactory{100, 20, 2, 50, 15, 40, 100};

class RecordingSender : public GainSender {
public:
    void SendPID(float P, float I, float IA, float D, float G, float V1, float V2, int) override
    {
        sent.push_back(GainSet{P, I, IA, D, V1, V2, G});
    }
    void CancelTest() override {}
    std::vector<GainSet> sent;
};

// A motor whose error is least at P 150 whatever D is, fed to the panel sample by sample
// with the gain message ticking every fourth sample (40 ms at 100 samples a second).
struct PanelRig {
    explicit PanelRig(bool enabled)
    {
        r.store.stored[0] = kFactory;
        r.gains().MotorSelcb_Click(0);
        if (enabled) r.gains().Enablecb_Click(true);
    }
    void feed(int samples)
    {
        for (int i = 0; i < samples && (panel.running() || i == 0); ++i, ++n) {
            const double p = drive.sent.back().P;
            panel.putSample(0, 0, static_cast<float>((0.1 + std::abs(std::log(p / 150))) * std::sin(0.7 * n)));
            if (n % 4 == 0) panel.gainMsgTick();
        }
    }
    Rig r;
    RecordingSender drive;
    GuidePanel panel{r.gains(), drive, [] {}};
    long n = 0;
};

TEST(GuidePanel, EveryWayToStopPutsTheUsersGainsBack)
{
    const std::pair<const char*, std::function<void(GuidePanel&)>> ways[] = {
        {"STOP", [](GuidePanel& p) { QTest::mouseClick(p.Stopcb, Qt::LeftButton); }},
        {"space bar", [](GuidePanel& p) { QTest::keyClick(&p, Qt::Key_Space); }},
        {"Esc on a control", [](GuidePanel& p) { QTest::keyClick(p.MaxFactortb, Qt::Key_Escape); }},
        {"closing the window", [](GuidePanel& p) { p.close(); }},
    };
    for (const auto& [name, stop] : ways) {
        for (const bool enabled : {false, true}) {
            SCOPED_TRACE(std::string(name) + (enabled ? ", Enab ticked" : ", Enab unticked"));
            PanelRig rig(enabled);
            rig.panel.show();
            QTest::mouseClick(rig.panel.Startcb, Qt::LeftButton);
            ASSERT_TRUE(rig.panel.running());
            EXPECT_TRUE(rig.r.gains().gainMsgEnabled()); // the candidates travel in the gain message
            rig.feed(900);                               // into the second candidate's sweep
            ASSERT_NE(rig.drive.sent.back(), kFactory);
            stop(rig.panel);
            EXPECT_FALSE(rig.panel.running());
            EXPECT_EQ(rig.drive.sent.back(), kFactory);
            EXPECT_EQ(rig.r.gains().gainMsgEnabled(), enabled);
            EXPECT_FALSE(rig.panel.gainMsgTick()); // the panel's own gains follow, if any
        }
    }
}

TEST(GuidePanel, BestGainsGoIntoThePanelOnlyWhenAskedFor)
{
    for (const bool use : {true, false}) {
        SCOPED_TRACE(use ? "Use these gains" : "Keep my gains");
        PanelRig rig(false);
        QTest::mouseClick(rig.panel.Startcb, Qt::LeftButton);
        rig.feed(19 * 600);
        ASSERT_FALSE(rig.panel.running());
        ASSERT_TRUE(rig.panel.UseGainscb->isEnabled());
        QTest::mouseClick(use ? rig.panel.UseGainscb : rig.panel.KeepGainscb, Qt::LeftButton);
        const GainSet& now = rig.r.gains().values();
        if (use) {
            EXPECT_NEAR(now.P, 150, 7.5);                 // within 5 % of the motor's best
            EXPECT_TRUE(rig.r.gains().GetDataModified()); // as if typed: differs from the configuration
        } else {
            EXPECT_EQ(now, kFactory);
        }
        EXPECT_FALSE(rig.r.gains().gainMsgEnabled());
    }
}

} // namespace
