#pragma once
// The tuning guide driven against the simulated module in simulated time, as the Tuning
// Display drives it: each sample of the tuned motor goes to the guide, the gain message
// timer ticks every 40 ms, and every gain message is kept as the module received it.
#include "link/message_ids.h"
#include "sim/sim_harness.h"
#include "tuning/gain_message.h"
#include "tuning/tuning_guide.h"

#include <functional>
#include <vector>

namespace kdx::test {

// A gain message as the module read it, back in the panel's units.
struct WireGains {
    double t; // simulated seconds
    double P, I, IA, D;
};

class GuideRig : public GuideOutput {
public:
    static constexpr int kMotor = 0; // the simulated KDX's tilt motor

    explicit GuideRig(uint64_t seed = 7) : link(sim::test::options(false, seed)) {}

    void sendGains(const GainSet& g) override
    {
        OutMsgBuffer b{};
        buildGainMsg(b, g.P, g.I, g.IA, g.D, g.G, g.V1, g.V2, kMotor);
        std::vector<uint8_t> bytes{msg::StartByte};
        const auto body = frameBody(b);
        bytes.insert(bytes.end(), body.begin(), body.end());
        link.sendRaw(bytes);
        // Read back from the bytes, as the module does.
        auto word = [&](int at) { return static_cast<int16_t>(body[at] | body[at + 1] << 8); };
        wire.push_back(
            {link.sim.now(), word(3) / 128.0 * 100, double(body[5]), body[14] / 16.0, word(6) / 128.0 * 100});
    }
    void setGainMessage(bool on) override { messageOn = on; }

    void tuningDrive() { link.send(117, {1 << kMotor}); }

    // Runs `seconds` of simulated time in 10 ms steps. While the guide runs it owns the
    // gain message; otherwise the panel's timer sends `panel` while messageOn holds.
    // `each` runs after every step (a test's own events).
    void run(TuningGuide* guide, double seconds, const std::function<void()>& each = {})
    {
        const double end = link.sim.now() + seconds;
        while (link.sim.now() < end - 1e-9) {
            if (link.sim.now() >= nextTick_ - 1e-9) {
                nextTick_ += 0.04;
                if (guide && guide->running()) guide->gainMsgTick();
                else if (messageOn) sendGains(panel);
            }
            const std::size_t before = link.cap.cyclic.size();
            std::vector<uint8_t> out;
            link.sim.advance(0.01, out);
            if (!deliver) out.clear(); // the line is cut: nothing reaches the tool
            link.cap.clock = link.sim.now();
            link.rx.receiveBytes(out);
            for (std::size_t i = before; i < link.cap.cyclic.size(); ++i) {
                const auto& s = link.cap.cyclic[i];
                if (guide) guide->putSample(s.rate[kMotor], s.error[kMotor]);
                samples.push_back(s);
            }
            if (each) each();
        }
    }

    sim::test::SimLink link;
    GainSet panel;
    bool messageOn = false;
    bool deliver = true;
    std::vector<WireGains> wire;
    std::vector<sim::test::Telemetry> samples;

private:
    double nextTick_ = 0;
};

} // namespace kdx::test
