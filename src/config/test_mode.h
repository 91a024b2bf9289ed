#pragma once
// Motor test mode: per motor a direction test ("Direction") or switched off, at a chosen
// power and rate, re-sent every 100 ms by TestTmr while any motor is in a test; and the
// one-shot tuning-drive command. The window owns the buttons and the timer and asks
// this class what to paint, send and whether the timer keeps running.
#include "link/frame.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace kdx {

namespace testmode {
inline constexpr int TimerMs = 100; // TestTmr, enabled from start
inline constexpr std::string_view PowerPrompt = "Enter new power level for test-mode 0-100%";
inline constexpr double PowerLower = 0, PowerUpper = 100;
inline constexpr std::string_view RatePrompt = "Enter new rate of turn for test-mode 0-255";
inline constexpr double RateLower = 0, RateUpper = 255;
inline constexpr float DefaultPower = 30; // percent
inline constexpr float DefaultRate = 8;

inline constexpr std::string_view TestcbCaption = "Direction";
inline constexpr std::string_view TestcbTip = "Axis should turn tilt-up, roll-right or pan-clockwise";
inline constexpr std::string_view TestOffcbTip = "Turns the motor off";
inline constexpr std::string_view TestDrivecbCaption = "Tuning";
inline constexpr std::string_view TestDrivecbTip =
    "Activates Q-Vane drive for tuning. Note Q-Vane must be in fixed-position mode for it to activate";
inline constexpr std::string_view ReversecbCaption = "Reverse";
inline constexpr std::string_view ReversecbTip = "Reverses the drive for the motor";
inline constexpr std::string_view TestPtbTip = "Power level for Motor Test mode";
inline constexpr std::string_view TestRatetbTip = "Rate of turn for Motor Test mode";
} // namespace testmode

class TestMode {
public:
    // Inverts the motor's direction test; turning it on clears the motor's off flag.
    // Enables TestTmr. Index other than 0/1 raises the subscript error.
    void Testcb_Click(int index);
    // The mirror image for the off flag.
    void TestOffcb_Click(int index);
    // Ends both direction tests; motors switched off stay off.
    void CancelTest();

    // One TestTmr tick: fills `out` with the test command to send. When no motor is in a
    // test, the timer is disabled, but this last command (flags 0, plus the relay bits)
    // is still sent. Returns whether the timer keeps running.
    bool TestTmr_Timer(OutMsgBuffer& out, bool targetIsQVane, int axis);
    bool TestTmrEnabled() const { return timerEnabled_; }

    bool direction(int index) const;
    bool off(int index) const;
    // Back colours (blue-green-red): green while the flag is set, light grey otherwise.
    uint32_t TestcbColour(int index) const;
    uint32_t TestOffcbColour(int index) const;

    // Test flags: 1 / 2 for motor 0 / 1 direction, 4 / 8 for off; relayed adds
    // 128 + 16 * axis.
    int flags(bool targetIsQVane, int axis) const;

    float testPower() const { return power_; }
    float testRate() const { return rate_; }
    // TestPtb / TestRatetb entries: store an in-range value, drop others silently.
    // Neither marks the configuration modified.
    bool applyTestPower(float value);
    bool applyTestRate(float value);
    std::string TestPtbCaption() const;    // "30%"
    std::string TestRatetbCaption() const; // "8"

private:
    std::array<bool, 2> direction_{};
    std::array<bool, 2> off_{};
    float power_ = testmode::DefaultPower;
    float rate_ = testmode::DefaultRate;
    bool timerEnabled_ = true;
};

// Test command: direct 6, 116, flags, rate, power, checksum; relayed 7, 130, 116, ...
// `flags` already holds the relay bits. Rate is rounded half to even; power (percent)
// becomes CInt(power * 2.55), 100 % -> 255.
void buildTestCommand(OutMsgBuffer& out, int flags, float rate, float power, bool targetIsQVane);

// Tuning drive for motor `index`: direct 4, 117, 2^index, checksum; relayed 5, 130, 117,
// 2^index + 128 + 16 * axis, checksum. Index other than 0/1 raises the subscript error.
void buildTuningDrive(OutMsgBuffer& out, int index, bool targetIsQVane, int axis);

} // namespace kdx
