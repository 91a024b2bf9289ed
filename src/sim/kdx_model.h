#pragma once
// One gimbal axis: the payload, the hand that holds the camera, the brushless motor
// between them, and the KDX module's control loop that drives the motor.
//
// Model (all of it integrated at 1 kHz, the module's own loop rate):
//
//  Payload   J w' = T_motor + T_friction + T_cogging + T_gravity, theta' = w
//            (semi-implicit Euler). With s = w - w_hand, the payload's motion relative
//            to the handle, T_friction = -b s - c tanh(s / w_c) (bearing drag and
//            stiction) and T_cogging = -k sin(84 * joint): friction and the motor's
//            cogging are how the hand's motion reaches the camera.
//            T_gravity = m g (d cos theta - h sin theta): the camera's centre of gravity
//            sits d ahead of and h below the axis (none on the pan axis), which the I
//            term has to hold.
//  Hand      slow sway plus tremor about the axis, seeded (sim/disturbance.h).
//  Motor     T_motor = ratio * Kt * i * sin(field - rotor), i = (power / 100) * V / R,
//            rotor = poles / 2 * ratio * joint angle (electrical), plus back-EMF braking
//            -Kt^2 / R * ratio^2 * (w - w_hand) while the driver is on. Torque therefore
//            follows the drive power and is limited by the supply voltage V.
//  Supply    V = V_batt / (1 + R_int * sum(power_k^2) / R) over the motors it feeds,
//            read with a little measurement noise: the voltage sags under load.
//  Sensors   the module reads the payload's angle and a gyro rate (low-passed at 60 Hz),
//            both 3 ms late, with small noise; an encoder gives the joint angle.
//  Loop      e = setpoint - angle (setpoint 0: the camera held level; +-2 degrees
//            alternating each second while the tuning drive runs)
//            P = G * KP * (PTerm / 100) * e
//            I += G * KI * IRate * e * dt while |e| <= IAngle, else I ramps to zero at
//                 the rate it would grow at |e| = IAngle; I held within +-90
//            D = -G * KD * (DTerm / 100) * rate
//            lead = clamp(+-(P + I + D), -90, 90) electrical degrees (sign: reverse flag)
//            field = poles_cfg / 2 * ratio_cfg * joint + lead: the field is commutated
//            from the encoder with the configured pole count and drive ratio, so a wrong
//            Poles or DriveRatio lets the field slip against the rotor as the joint turns.
//            power = StaticPower + (DynamicPower - StaticPower) * min(1, |e| / PowerErrorAngle)
//            P, I, D are electrical degrees of field lead; G = GainPerc / 100.
//  Tests     direction test: the field turns at the commanded rate (electrical degrees
//            per second; the other way when reversed) at the commanded power and the
//            loop stands aside; off: the driver releases the motor and the payload
//            hangs on its bearings.
//
// Constants: KP = 64 elec deg/deg, KI = 5 elec deg/s per (deg * IRate unit), KD = 6
// elec deg per deg/s. Motor: Kt 0.11 N m/A, R 12 ohm, 14 poles, direct drive, cogging
// k 3 mN m (84 per turn). Supply: 12.6 V behind 0.5 ohm, read with 10 mV noise.
// Sensors: 3 ms late, gyro low-pass 60 Hz, noise 0.05 deg/s and 0.005 deg.
// Friction: b 1.5e-3 N m s/rad; stiction c 0.8 to 1.5 mN m smoothed over 0.01 rad/s.
//   axis   inertia      centre of gravity        hand sway (peak)  tremor (RMS)
//   tilt   1.2e-3 kg m2 1.5 mm ahead, 2 mm below 4 deg             0.12 deg
//   roll   0.8e-3 kg m2 1 mm ahead, 1.5 mm below 3 deg             0.10 deg
//   pan    2.0e-3 kg m2 on the axis              6 deg             0.10 deg
// (a 0.45 kg camera). Sway: three sinusoids in 0.12-0.3, 0.3-0.6 and 0.6-1 Hz sharing
// the peak 55/30/15 %; tremor: white noise through a resonance at 8-11 Hz, damping 0.2.
// With these, the factory gains hold the camera within about 0.3 degree; a quarter
// of the P term roughly triples the error; no D with four times the P rings at 5 Hz.
#include "sim/disturbance.h"

#include <array>
#include <cstdint>

namespace kdx::sim {

enum class AxisKind { Tilt, Roll, Pan };

// The mechanics of one axis and the motor fitted to it.
struct AxisPhysics {
    double inertia;      // kg m^2
    double viscous;      // N m s / rad
    double coulomb;      // N m
    double coulombWidth; // rad / s: the stiction step is smoothed over this rate
    double cogging;      // N m, peak of the motor's cogging torque
    int cogsPerTurn;     // cogging periods per turn of the joint
    double weight;       // m g, N
    double cgAhead;      // m
    double cgBelow;      // m
    double motorKt;      // N m / A
    double windingOhms;  // ohm
    int motorPoles;
    double motorRatio; // motor turns per load turn
    HandMotionShape hand;
};

AxisPhysics axisPhysics(AxisKind kind);

// The gain set the loop runs on, in the units the tool shows.
struct DriveGains {
    double pTerm = 100.0; // %
    double iRate = 20.0;
    double iAngle = 2.0;          // degrees
    double dTerm = 50.0;          // %
    double gainPerc = 100.0;      // %
    double staticPower = 15.0;    // %
    double dynamicPower = 40.0;   // %
    double powerErrorAngle = 4.0; // degrees
    int poles = 14;
    double driveRatio = 1.0;
    bool reverse = false;
};

enum class TestDrive { None, Direction, Off };

// What the module reports about the axis, in display units.
struct AxisReport {
    double rate = 0;                        // degrees per second
    double error = 0;                       // degrees
    double pComp = 0, iComp = 0, dComp = 0; // electrical degrees of lead
    double elecAngle = 0;                   // 0 .. 360
    double powerPercent = 0;
    double angle = 0; // degrees, -180 .. 180
    double joint = 0; // payload relative to handle, degrees
    bool testDriveActive = false;
};

class KdxAxis {
public:
    static constexpr double kStepSeconds = 0.001;
    static constexpr double kTuningStepDeg = 2.0;

    KdxAxis(const AxisPhysics& physics, uint64_t seed);

    void setGains(const DriveGains& gains) { gains_ = gains; }
    const DriveGains& gains() const { return gains_; }

    // rate in electrical degrees per second, power in percent.
    void setTest(TestDrive mode, double rate, double powerPercent);
    TestDrive test() const { return test_; }
    void setTuningDrive(bool on);
    bool tuningDrive() const { return tuningDrive_; }
    // false while the module sits in its bootloader: the driver is off, the loop stopped.
    void setPowered(bool on);
    // Loop state as at power-up: integrator cleared, tests and tuning drive stopped.
    void restartLoop();

    // One loop cycle and physics step at the given supply voltage.
    void step(double supplyVolts);

    AxisReport report() const;
    // (drive fraction)^2 / R: what this motor draws from the supply per volt.
    double loadConductance() const;
    double angleDeg() const; // true payload angle, degrees (not wrapped)
    double handleDeg() const;

private:
    void runLoop(double measAngle, double measRate, double jointDeg);

    AxisPhysics phys_;
    DriveGains gains_;
    HandMotion hand_;
    SimRandom noise_;

    // Payload.
    double theta_ = 0.0; // rad
    double omega_ = 0.0; // rad/s

    // Sensors: gyro filter and the 2-cycle delay line of (angle, rate), degrees.
    double gyro_ = 0.0;
    static constexpr unsigned kSensorDelay = 3; // loop cycles
    std::array<double, kSensorDelay + 1> delayAngle_{}, delayRate_{};
    unsigned delayPos_ = 0;

    // Loop.
    bool powered_ = true;
    TestDrive test_ = TestDrive::None;
    double testRate_ = 0.0, testPower_ = 0.0, testField_ = 0.0;
    bool tuningDrive_ = false;
    uint64_t tuningTicks_ = 0;
    double iComp_ = 0.0;
    double fieldDeg_ = 0.0; // electrical degrees
    double drivePercent_ = 0.0;
    AxisReport report_;
};

} // namespace kdx::sim
