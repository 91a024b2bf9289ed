#pragma once
// The simulated module's protocol side, in one of two roles:
//  - a KDX wired directly: telemetry 121 for both motors, memory read 112 / write 113
//    (answered with 120), gains 115, test 116, tuning drive 117, bootloader 254;
//  - a Q-Vane with a KDX on each of its three axes: telemetry 122 for the selected
//    axis, axis selection 131..133, and the relayed (130) read, write, gain, test and
//    tuning-drive messages, reads and writes answered with 136 + axis.
// Frames with a bad checksum, unknown identifiers and messages of the wrong length are
// ignored. Time moves in 1 ms ticks; telemetry leaves every 10th.
#include "sim/inbound_parser.h"
#include "sim/kdx_model.h"
#include "sim/motor_config.h"
#include "sim/sim_random.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace kdx::sim {

enum class Role { Kdx, QVane };

class ModuleEndpoint {
public:
    static constexpr int kTicksPerSecond = 1000;
    static constexpr int kTicksPerTelemetry = 10; // 100 messages per second
    static constexpr int kBootloaderTicks = 3000; // silence after a restart request
    static constexpr int kGainHoldTicks = 200;    // tuned gains lapse after this
    static constexpr int kTestHoldTicks = 500;    // a test lapses unless repeated

    ModuleEndpoint(Role role, uint64_t seed);

    Role role() const { return role_; }
    // Bytes from the tool, at the current time. Replies wait for flushReplies().
    void receive(std::span<const uint8_t> bytes);
    // Appends the replies queued by receive().
    void flushReplies(std::vector<uint8_t>& out);
    // One 1 ms step of the model; appends telemetry when it is due.
    void tick(std::vector<uint8_t>& out);

    uint64_t ticks() const { return ticks_; }
    int axisCount() const { return static_cast<int>(drives_.size()); }
    const KdxAxis& axis(int i) const { return drives_.at(static_cast<std::size_t>(i)).axis; }
    // The configuration block of a motor (direct) or of an axis's KDX (Q-Vane).
    const MotorBlock& block(int i) const { return drives_.at(static_cast<std::size_t>(i)).block; }
    // True while the tuned gains of a gain message are in use on that motor or axis.
    bool usingTunedGains(int i) const { return drives_.at(static_cast<std::size_t>(i)).tuned.has_value(); }
    int selectedAxis() const { return selectedAxis_; }
    bool inBootloader() const { return bootTicksLeft_ > 0; }
    uint64_t badFrames() const { return parser_.badFrames(); }

private:
    struct Drive {
        KdxAxis axis;
        MotorBlock block;
        std::optional<DriveGains> tuned;
        uint64_t tunedUntil = 0;
        uint64_t testUntil = 0;
    };

    void handle(std::span<const uint8_t> m);
    void handleDirect(int id, std::span<const uint8_t> payload);
    void handleQVane(int id, std::span<const uint8_t> payload);
    void handleRelayed(int id, std::span<const uint8_t> payload);
    void applyGains(Drive& d);
    void setTuned(Drive& d, std::span<const uint8_t> gains);
    void setTest(Drive& d, bool direction, bool off, int rate, int power);
    void replyMemory();
    void replyAxisMemory(int axis);
    void enterBootloader();
    void freshStart();
    void sendTelemetry(std::vector<uint8_t>& out);
    double supplyVolts() const;

    Role role_;
    std::vector<Drive> drives_;
    InboundParser parser_;
    SimRandom adcNoise_;
    std::vector<uint8_t> pending_;
    uint64_t ticks_ = 0;
    uint64_t telemetryPhase_ = 0;
    int bootTicksLeft_ = 0;
    int selectedAxis_ = 0;
    uint8_t messageCounter_ = 0;
    double volts_ = 0;
};

} // namespace kdx::sim
