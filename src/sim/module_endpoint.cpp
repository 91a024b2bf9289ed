#include "sim/module_endpoint.h"

#include "config/memory_layout.h"
#include "core/host_numeric.h"
#include "link/message_ids.h"
#include "sim/telemetry_encoder.h"

#include <algorithm>

namespace kdx::sim {

namespace {

// The supply: a charged three-cell battery behind its own and the wiring's resistance.
constexpr double kBatteryVolts = 12.6;
constexpr double kSupplyOhms = 0.5;
constexpr double kVoltReadNoise = 0.01; // volts RMS

constexpr int kGainPayload = 13; // selector, P(2), I, D(2), G(2), V1(2), V2(2), IA
constexpr int kTestPayload = 3;  // flags, rate, power
constexpr int kRelayFlag = 0x80; // relayed selectors: 128 + 16 * axis + ...
constexpr int kQVaneAxes = 3;

int relayedAxis(int selector) { return (selector & kRelayFlag) ? (selector >> 4) & 3 : -1; }

} // namespace

ModuleEndpoint::ModuleEndpoint(Role role, uint64_t seed) : role_(role), adcNoise_(seed ^ 0x5EEDF00Dull)
{
    SimRandom seeds(seed);
    const int count = role == Role::Kdx ? 2 : kQVaneAxes;
    drives_.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        // Direct: motor 0 levels the tilt, motor 1 the roll. Q-Vane: tilt, roll, pan.
        const auto kind = static_cast<AxisKind>(i);
        drives_.push_back(Drive{KdxAxis(axisPhysics(kind), seeds.next()), defaultMotorBlock(i), {}, 0, 0});
        applyGains(drives_.back());
    }
    volts_ = supplyVolts();
}

void ModuleEndpoint::receive(std::span<const uint8_t> bytes)
{
    if (inBootloader()) return; // the bootloader speaks its own protocol
    for (uint8_t b : bytes)
        if (parser_.push(b)) handle(parser_.message());
}

void ModuleEndpoint::flushReplies(std::vector<uint8_t>& out)
{
    out.insert(out.end(), pending_.begin(), pending_.end());
    pending_.clear();
}

void ModuleEndpoint::handle(std::span<const uint8_t> m)
{
    const int id = m[1];
    const auto payload = m.subspan(2, m.size() - 3);
    if (id == msg::Bootloader) {
        if (payload.empty()) enterBootloader();
        return;
    }
    if (role_ == Role::Kdx) handleDirect(id, payload);
    else handleQVane(id, payload);
}

void ModuleEndpoint::handleDirect(int id, std::span<const uint8_t> payload)
{
    switch (id) {
    case msg::ReadMemory:
        if (payload.empty()) replyMemory();
        break;
    case msg::WriteMemory:
        if (payload.size() == layout::DirectBytes) {
            for (std::size_t m = 0; m < drives_.size(); ++m) {
                std::copy_n(payload.begin() + static_cast<long>(m * layout::MotorBlockSize), layout::MotorBlockSize,
                            drives_[m].block.begin());
                applyGains(drives_[m]);
            }
            replyMemory();
        }
        break;
    case msg::Gains:
        if (payload.size() == kGainPayload && payload[0] < drives_.size())
            setTuned(drives_[payload[0]], payload.subspan(1));
        break;
    case msg::TestDrive:
        if (payload.size() == kTestPayload) {
            const int flags = payload[0];
            for (std::size_t m = 0; m < drives_.size(); ++m)
                setTest(drives_[m], flags & (1 << m), flags & (4 << m), payload[1], payload[2]);
        }
        break;
    case msg::TuningDrive:
        if (payload.size() == 1) {
            for (std::size_t m = 0; m < drives_.size(); ++m)
                if (payload[0] & (1 << m)) drives_[m].axis.setTuningDrive(!drives_[m].axis.tuningDrive());
        }
        break;
    default: break; // not for a KDX: ignored
    }
}

void ModuleEndpoint::handleQVane(int id, std::span<const uint8_t> payload)
{
    if (id >= msg::SelectAxisBase && id < msg::SelectAxisBase + kQVaneAxes) {
        if (payload.empty()) selectedAxis_ = id - msg::SelectAxisBase;
        return;
    }
    if (id == msg::RelayMarker && !payload.empty()) handleRelayed(payload[0], payload.subspan(1));
}

void ModuleEndpoint::handleRelayed(int id, std::span<const uint8_t> payload)
{
    if (id >= msg::RelayedReadBase && id < msg::RelayedReadBase + kQVaneAxes) {
        if (payload.empty()) replyAxisMemory(id - msg::RelayedReadBase);
        return;
    }
    if (id >= msg::RelayedWriteBase && id < msg::RelayedWriteBase + kQVaneAxes) {
        if (payload.size() == layout::RelayedBytes) {
            const int axis = id - msg::RelayedWriteBase;
            Drive& d = drives_[static_cast<std::size_t>(axis)];
            std::copy(payload.begin(), payload.end(), d.block.begin());
            applyGains(d);
            replyAxisMemory(axis);
        }
        return;
    }
    if (payload.empty()) return;
    const int axis = relayedAxis(payload[0]);
    if (axis < 0 || axis >= kQVaneAxes) return;
    Drive& d = drives_[static_cast<std::size_t>(axis)];
    switch (id) {
    case msg::Gains:
        if (payload.size() == kGainPayload) setTuned(d, payload.subspan(1));
        break;
    case msg::TestDrive:
        if (payload.size() == kTestPayload) setTest(d, payload[0] & 1, payload[0] & 4, payload[1], payload[2]);
        break;
    case msg::TuningDrive:
        if (payload.size() == 1 && (payload[0] & 1)) d.axis.setTuningDrive(!d.axis.tuningDrive());
        break;
    default: break;
    }
}

void ModuleEndpoint::applyGains(Drive& d)
{
    if (d.tuned) d.axis.setGains(*d.tuned);
    else d.axis.setGains(gainsFromBlock(d.block));
}

void ModuleEndpoint::setTuned(Drive& d, std::span<const uint8_t> g)
{
    // The gain message carries the seven tuning values; the rest stays as configured.
    DriveGains tuned = gainsFromBlock(d.block);
    tuned.pTerm = signedWord(g[0], g[1]) / 128.0 * 100.0;
    tuned.iRate = g[2];
    tuned.dTerm = signedWord(g[3], g[4]) / 128.0 * 100.0;
    tuned.gainPerc = signedWord(g[5], g[6]) / 256.0 * 100.0;
    tuned.staticPower = signedWord(g[7], g[8]) / 256.0;
    tuned.dynamicPower = signedWord(g[9], g[10]) / 256.0;
    tuned.iAngle = g[11] / 16.0;
    d.tuned = tuned;
    d.tunedUntil = ticks_ + kGainHoldTicks;
    applyGains(d);
}

void ModuleEndpoint::setTest(Drive& d, bool direction, bool off, int rate, int power)
{
    const TestDrive mode = direction ? TestDrive::Direction : off ? TestDrive::Off : TestDrive::None;
    d.axis.setTest(mode, rate, power / 2.55);
    d.testUntil = ticks_ + kTestHoldTicks;
}

void ModuleEndpoint::replyMemory()
{
    std::array<uint8_t, layout::DirectBytes> image{};
    for (std::size_t m = 0; m < drives_.size(); ++m)
        std::copy(drives_[m].block.begin(), drives_[m].block.end(),
                  image.begin() + static_cast<long>(m * layout::MotorBlockSize));
    appendFrame(pending_, msg::MemoryContents, image);
}

void ModuleEndpoint::replyAxisMemory(int axis)
{
    std::array<uint8_t, layout::RelayedBytes + 2> payload{};
    const MotorBlock& b = drives_[static_cast<std::size_t>(axis)].block;
    std::copy(b.begin(), b.end(), payload.begin());
    payload[layout::RelayedBytes] = kFirmwareMajor;
    payload[layout::RelayedBytes + 1] = kFirmwareMinor;
    appendFrame(pending_, msg::AxisMemoryBase + axis, payload);
}

void ModuleEndpoint::enterBootloader()
{
    bootTicksLeft_ = kBootloaderTicks;
    pending_.clear();
    parser_.reset();
    for (Drive& d : drives_) d.axis.setPowered(false);
}

void ModuleEndpoint::freshStart()
{
    // Configuration memory survives; everything the tool set at run time does not.
    selectedAxis_ = 0;
    messageCounter_ = 0;
    telemetryPhase_ = ticks_;
    for (Drive& d : drives_) {
        d.tuned.reset();
        d.axis.setPowered(true);
        applyGains(d);
    }
}

double ModuleEndpoint::supplyVolts() const
{
    double load = 0.0;
    for (const Drive& d : drives_) load += d.axis.loadConductance();
    return kBatteryVolts / (1.0 + kSupplyOhms * load);
}

void ModuleEndpoint::tick(std::vector<uint8_t>& out)
{
    ++ticks_;
    for (Drive& d : drives_) {
        if (d.tuned && ticks_ >= d.tunedUntil) {
            d.tuned.reset();
            applyGains(d);
        }
        if (d.axis.test() != TestDrive::None && ticks_ >= d.testUntil) d.axis.setTest(TestDrive::None, 0, 0);
    }
    volts_ = supplyVolts();
    for (Drive& d : drives_) d.axis.step(volts_);

    if (bootTicksLeft_ > 0) {
        if (--bootTicksLeft_ == 0) freshStart();
        return;
    }
    if ((ticks_ - telemetryPhase_) % kTicksPerTelemetry == 0) sendTelemetry(out);
}

void ModuleEndpoint::sendTelemetry(std::vector<uint8_t>& out)
{
    const double volts = volts_ + kVoltReadNoise * adcNoise_.roughNormal();
    ++messageCounter_;
    if (role_ == Role::Kdx) {
        DirectTelemetry t;
        t.motor = {drives_[0].axis.report(), drives_[1].axis.report()};
        t.volts = volts;
        t.debug[0] = messageCounter_;
        t.firmwareMajor = kFirmwareMajor;
        t.firmwareMinor = kFirmwareMinor;
        appendDirectTelemetry(t, out);
    } else {
        RelayedTelemetry t;
        t.axis = selectedAxis_;
        t.report = drives_[static_cast<std::size_t>(selectedAxis_)].axis.report();
        t.volts = volts;
        t.inputValid = {true, false, false}; // a PPM receiver is connected
        appendRelayedTelemetry(t, out);
    }
}

} // namespace kdx::sim
