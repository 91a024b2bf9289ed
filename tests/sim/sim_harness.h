#pragma once
// A tool's-eye view of the simulated module: frames go in as the tool builds them, and
// what comes back passes through the tool's receiver and is decoded with the tool's
// conversions, so a test sees exactly what a user would.
#include "config/conversions.h"
#include "link/frame.h"
#include "link/receiver.h"
#include "sim/simulator.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace kdx::sim::test {

struct Telemetry {
    double t = 0; // simulated time of arrival
    int id = 0, axis = -1, flags = 0, configBits = -1, major = -1, minor = -1;
    std::array<float, 2> rate{}, error{}, p{}, power{}, angle{};
    float volts = 0;
};

struct Reply {
    double t = 0;
    int id = 0;
    std::vector<uint8_t> payload;
};

class Capture : public MessageSink {
public:
    void PutCyclicMsg(const MsgView& m) override
    {
        Telemetry s{clock, m.id()};
        motor(m, 2, s, 0);
        motor(m, 17, s, 1);
        s.volts = RawToVoltage(m[32], m[33]);
        s.flags = m[34];
        s.configBits = m[35];
        s.major = m[45];
        s.minor = m[46];
        cyclic.push_back(s);
    }
    void PutCyclicQvaneMsg(const MsgView& m) override
    {
        Telemetry s{clock, m.id(), m[2]};
        motor(m, 3, s, 0);
        s.volts = RawToVoltage(m[18], m[19]);
        s.flags = m[20];
        (void)m[23]; // the logged angle is there
        cyclic.push_back(s);
    }
    void PutMemoryMsg(const MsgView& m) override { keep(m); }
    void PutAxisMemoryMsg(const MsgView& m) override { keep(m); }
    void PutMessageReceived(bool good) override { (good ? good_ : bad_)++; }
    int bad() const { return bad_; }

    double clock = 0;
    std::vector<Telemetry> cyclic;
    std::vector<Reply> replies;

private:
    static void motor(const MsgView& m, int at, Telemetry& s, int k)
    {
        s.rate[k] = RawToAngle2(m[at], m[at + 1]);
        s.error[k] = RawToAngle2(m[at + 2], m[at + 3]);
        s.p[k] = RawToAngle(m[at + 4], m[at + 5]);
        s.power[k] = RawToPowerPerc(m[at + 12]);
        s.angle[k] = RawToAngle2(m[at + 13], m[at + 14]);
    }
    void keep(const MsgView& m)
    {
        Reply r{clock, m.id(), {}};
        for (int i = 2; i < m.length() - 1; ++i) r.payload.push_back(static_cast<uint8_t>(m[i]));
        replies.push_back(r);
    }
    int good_ = 0, bad_ = 0;
};

class SimLink {
public:
    explicit SimLink(const SimOptions& o) : sim(o), rx(&cap) {}

    void send(int id, const std::vector<uint8_t>& payload) { sim.consume(buildFrame(id, payload)); }
    void sendRaw(const std::vector<uint8_t>& bytes) { sim.consume(bytes); }
    void run(double seconds)
    {
        runSending(seconds, 1e9, [] {});
    }
    // Runs on in 10 ms steps, calling `send` at once and then every `period` seconds
    // (the tool's timers: the gain message every 40 ms, the test command every 100 ms).
    template <typename F>
    void runSending(double seconds, double period, F send)
    {
        const double end = sim.now() + seconds;
        for (double due = sim.now(); sim.now() < end - 1e-9;) {
            if (sim.now() >= due - 1e-9) {
                send();
                due += period;
            }
            std::vector<uint8_t> out;
            sim.advance(std::min(0.01, end - sim.now()), out);
            cap.clock = sim.now();
            rx.receiveBytes(out);
        }
    }

    Simulator sim;
    Capture cap;
    Receiver rx;
};

inline SimOptions options(bool qvane, uint64_t seed = 1)
{
    SimOptions o;
    o.qvane = qvane;
    o.seed = seed;
    return o;
}

// A relayed payload: the inner identifier (or axis code), then the rest.
inline std::vector<uint8_t> prefixed(int first, const std::vector<uint8_t>& rest)
{
    std::vector<uint8_t> v(rest.size() + 1);
    v[0] = static_cast<uint8_t>(first);
    std::copy(rest.begin(), rest.end(), v.begin() + 1);
    return v;
}

// The gain message's 13 payload bytes as the tuning window sends them: selector, then
// P, I, D, G, V1, V2, IA in raw units. Defaults are the factory gains.
struct Gains {
    double p = 100, i = 20, ia = 2, d = 50, g = 100, v1 = 15, v2 = 40;
    std::vector<uint8_t> payload(int selector) const
    {
        std::vector<uint8_t> b{static_cast<uint8_t>(selector)};
        auto word = [&](double v) {
            const long x = std::lrint(v);
            b.push_back(static_cast<uint8_t>(x & 255));
            b.push_back(static_cast<uint8_t>((x >> 8) & 255));
        };
        word(p / 100 * 128);
        b.push_back(static_cast<uint8_t>(std::lrint(i) & 255));
        word(d / 100 * 128);
        word(g / 100 * 256);
        word(v1 * 256);
        word(v2 * 256);
        b.push_back(static_cast<uint8_t>(std::lrint(ia * 16) & 255));
        return b;
    }
};

// Sends the gains to motor `index` (direct) or axis `index` (relayed).
inline void sendGains(SimLink& link, bool qvane, int index, const Gains& g)
{
    if (qvane) link.send(130, prefixed(115, g.payload(128 + 16 * index)));
    else link.send(115, g.payload(index));
}

template <class T>
double rms(const std::vector<T>& v)
{
    double s = 0;
    for (double x : v) s += x * x;
    return v.empty() ? 0 : std::sqrt(s / static_cast<double>(v.size()));
}

// One motor of the simulated KDX, or one axis of the simulated Q-Vane.
struct Axis {
    const char* name;
    bool qvane;
    int index; // motor (direct) or axis (Q-Vane)
};
inline constexpr Axis kAxes[] = {{"direct motor 0 (tilt)", false, 0},
                                 {"direct motor 1 (roll)", false, 1},
                                 {"Q-Vane tilt", true, 0},
                                 {"Q-Vane roll", true, 1},
                                 {"Q-Vane pan", true, 2}};

struct Trace {
    std::vector<float> error, rate; // 100 samples per second, as the Tuning Display keeps them
};

// Seed 7; settles for a second, then records 10 s of the axis as decoded telemetry, with
// `gains` sent every 40 ms as the tuning window does (none: the stored configuration).
// With `tuningDrive` the drive is switched on at the start and steps the set point.
inline Trace record(const Axis& a, const Gains* gains, bool tuningDrive = false)
{
    SimLink link(options(a.qvane, 7));
    if (a.qvane) link.send(131 + a.index, {});
    if (tuningDrive) {
        if (a.qvane) link.send(130, {117, static_cast<uint8_t>(1 + 128 + 16 * a.index)});
        else link.send(117, {static_cast<uint8_t>(1 << a.index)});
    }
    link.runSending(11.0, 0.04, [&] {
        if (gains) sendGains(link, a.qvane, a.index, *gains);
    });
    Trace r;
    for (const auto& s : link.cap.cyclic) {
        if (s.t <= 1.005) continue; // the first sample after settling is at 1.01 s
        r.error.push_back(s.error[a.qvane ? 0 : a.index]);
        r.rate.push_back(s.rate[a.qvane ? 0 : a.index]);
    }
    return r;
}

} // namespace kdx::sim::test
