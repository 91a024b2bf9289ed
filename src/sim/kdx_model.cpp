#include "sim/kdx_model.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kdx::sim {

namespace {

constexpr double kDeg = std::numbers::pi / 180.0;
constexpr double kRad = 180.0 / std::numbers::pi;

// Loop scale: electrical degrees of field lead per unit of each term at 100 %.
constexpr double kP = 64.0; // per degree of error
constexpr double kI = 5.0;  // per second, per degree of error, per IRate unit
constexpr double kD = 6.0;  // per degree per second of rate
constexpr double kMaxLead = 90.0;

constexpr double kGyroCutoffHz = 60.0;
constexpr double kGyroNoise = 0.05;   // deg/s RMS
constexpr double kAngleNoise = 0.005; // deg RMS
constexpr double kGravity = 9.81;

double wrap180(double deg)
{
    deg = std::fmod(deg + 180.0, 360.0);
    if (deg < 0) deg += 360.0;
    return deg - 180.0;
}

double wrap360(double deg)
{
    deg = std::fmod(deg, 360.0);
    return deg < 0 ? deg + 360.0 : deg;
}

double finiteOr(double v, double fallback) { return std::isfinite(v) ? v : fallback; }

} // namespace

AxisPhysics axisPhysics(AxisKind kind)
{
    // A small mirrorless camera on a hand-held gimbal. Tilt carries the camera alone;
    // roll carries it closer to its axis; pan turns the whole lower assembly.
    AxisPhysics p{};
    p.viscous = 1.5e-3;
    p.coulombWidth = 0.01;
    p.cogging = 3e-3;
    p.cogsPerTurn = 84; // 12 slots, 14 poles
    p.motorKt = 0.11;
    p.windingOhms = 12.0;
    p.motorPoles = 14;
    p.motorRatio = 1.0;
    switch (kind) {
    case AxisKind::Tilt:
        p.inertia = 1.2e-3;
        p.coulomb = 1.0e-3;
        p.weight = 0.45 * kGravity;
        p.cgAhead = 1.5e-3;
        p.cgBelow = 2.0e-3;
        p.hand = {4.0, 0.12};
        break;
    case AxisKind::Roll:
        p.inertia = 0.8e-3;
        p.coulomb = 0.8e-3;
        p.weight = 0.45 * kGravity;
        p.cgAhead = 1.0e-3;
        p.cgBelow = 1.5e-3;
        p.hand = {3.0, 0.10};
        break;
    case AxisKind::Pan:
        p.inertia = 2.0e-3;
        p.coulomb = 1.5e-3;
        p.weight = 0.0;
        p.cgAhead = 0.0;
        p.cgBelow = 0.0;
        p.hand = {6.0, 0.10};
        break;
    }
    return p;
}

KdxAxis::KdxAxis(const AxisPhysics& physics, uint64_t seed)
    : phys_(physics), hand_(physics.hand, kStepSeconds, seed), noise_(seed ^ 0xA5A5A5A5DEADBEEFull)
{
}

void KdxAxis::setTest(TestDrive mode, double rate, double powerPercent)
{
    if (mode == TestDrive::Direction && test_ != TestDrive::Direction)
        testField_ = drivePercent_ > 0 ? fieldDeg_ : report_.joint * gains_.poles / 2.0 * gains_.driveRatio;
    if (mode == TestDrive::None && test_ != TestDrive::None) iComp_ = 0.0; // the loop takes over afresh
    test_ = mode;
    testRate_ = finiteOr(rate, 0.0);
    testPower_ = std::clamp(finiteOr(powerPercent, 0.0), 0.0, 100.0);
}

void KdxAxis::setTuningDrive(bool on)
{
    if (on && !tuningDrive_) tuningTicks_ = 0;
    tuningDrive_ = on;
}

void KdxAxis::setPowered(bool on)
{
    if (on && !powered_) restartLoop();
    powered_ = on;
}

void KdxAxis::restartLoop()
{
    iComp_ = 0.0;
    test_ = TestDrive::None;
    tuningDrive_ = false;
    drivePercent_ = 0.0;
}

void KdxAxis::step(double supplyVolts)
{
    // Sensors, as the module sees the payload at the start of this cycle.
    const double trueRateDeg = omega_ * kRad;
    const double alpha = kStepSeconds / (kStepSeconds + 1.0 / (2.0 * std::numbers::pi * kGyroCutoffHz));
    gyro_ += alpha * (trueRateDeg + kGyroNoise * noise_.roughNormal() - gyro_);
    delayPos_ = (delayPos_ + 1) % (kSensorDelay + 1);
    delayAngle_[delayPos_] = theta_ * kRad + kAngleNoise * noise_.roughNormal();
    delayRate_[delayPos_] = gyro_;
    const unsigned oldest = (delayPos_ + 1) % (kSensorDelay + 1);
    const double jointDeg = (theta_ - hand_.angle()) * kRad;

    runLoop(delayAngle_[oldest], delayRate_[oldest], jointDeg);

    // Physics over the cycle, with the hand moving underneath.
    hand_.step();
    const double joint = theta_ - hand_.angle();
    const double slip = omega_ - hand_.rate();
    double torque = -phys_.viscous * slip - phys_.coulomb * std::tanh(slip / phys_.coulombWidth) -
                    phys_.cogging * std::sin(phys_.cogsPerTurn * joint);
    if (drivePercent_ > 0.0) {
        const double current = drivePercent_ / 100.0 * supplyVolts / phys_.windingOhms;
        const double rotor = phys_.motorPoles / 2.0 * phys_.motorRatio * joint;
        torque += phys_.motorRatio * phys_.motorKt * current * std::sin(fieldDeg_ * kDeg - rotor);
        torque -= phys_.motorKt * phys_.motorKt / phys_.windingOhms * phys_.motorRatio * phys_.motorRatio * slip;
    }
    if (phys_.weight != 0.0)
        torque += phys_.weight * (phys_.cgAhead * std::cos(theta_) - phys_.cgBelow * std::sin(theta_));
    omega_ += torque / phys_.inertia * kStepSeconds;
    theta_ += omega_ * kStepSeconds;
}

void KdxAxis::runLoop(double measAngle, double measRate, double jointDeg)
{
    AxisReport r;
    r.rate = measRate;
    r.angle = wrap180(measAngle);
    r.joint = jointDeg;

    double setpoint = 0.0;
    if (tuningDrive_) {
        setpoint = (tuningTicks_ / 1000) % 2 == 0 ? kTuningStepDeg : -kTuningStepDeg;
        ++tuningTicks_;
    }
    const double error = wrap180(setpoint - measAngle);
    r.error = error;
    const double direction = gains_.reverse ? -1.0 : 1.0;
    const double elecPerJointDeg = gains_.poles / 2.0 * gains_.driveRatio;
    const double rotorEstimate = elecPerJointDeg * jointDeg;

    if (!powered_ || test_ == TestDrive::Off) {
        drivePercent_ = 0.0;
        fieldDeg_ = rotorEstimate;
    } else if (test_ == TestDrive::Direction) {
        testField_ = std::fmod(testField_ + direction * testRate_ * kStepSeconds, 360.0 * 64);
        fieldDeg_ = testField_;
        drivePercent_ = testPower_;
    } else {
        const double g = gains_.gainPerc / 100.0;
        const double p = g * kP * gains_.pTerm / 100.0 * error;
        const double iRate = g * kI * gains_.iRate;
        if (std::abs(error) <= gains_.iAngle) {
            iComp_ += iRate * error * kStepSeconds;
        } else {
            const double ramp = std::abs(iRate) * gains_.iAngle * kStepSeconds;
            iComp_ -= std::clamp(iComp_, -ramp, ramp);
        }
        iComp_ = std::clamp(finiteOr(iComp_, 0.0), -kMaxLead, kMaxLead);
        const double d = -g * kD * gains_.dTerm / 100.0 * measRate;
        const double lead = std::clamp(finiteOr(direction * (p + iComp_ + d), 0.0), -kMaxLead, kMaxLead);
        fieldDeg_ = rotorEstimate + lead;
        const double reach = gains_.powerErrorAngle > 0 ? std::min(1.0, std::abs(error) / gains_.powerErrorAngle) : 1.0;
        drivePercent_ = std::clamp(
            finiteOr(gains_.staticPower + (gains_.dynamicPower - gains_.staticPower) * reach, 0.0), 0.0, 100.0);
        r.pComp = p;
        r.iComp = iComp_;
        r.dComp = d;
    }
    fieldDeg_ = finiteOr(fieldDeg_, 0.0);
    r.elecAngle = wrap360(fieldDeg_);
    r.powerPercent = drivePercent_;
    r.testDriveActive = tuningDrive_ || test_ == TestDrive::Direction;
    report_ = r;
}

AxisReport KdxAxis::report() const { return report_; }

double KdxAxis::loadConductance() const
{
    const double f = drivePercent_ / 100.0;
    return f * f / phys_.windingOhms;
}

double KdxAxis::angleDeg() const { return theta_ * kRad; }
double KdxAxis::handleDeg() const { return hand_.angle() * kRad; }

} // namespace kdx::sim
