#include "config/test_mode.h"

#include "core/colour.h"
#include "core/host_numeric.h"
#include "link/message_ids.h"

namespace kdx {

namespace {

int relayBits(int axis) { return 128 + 16 * axis; }

} // namespace

void TestMode::Testcb_Click(int index)
{
    bool& dir = at(direction_, index);
    dir = !dir;
    if (dir) at(off_, index) = false;
    timerEnabled_ = true;
}

void TestMode::TestOffcb_Click(int index)
{
    bool& o = at(off_, index);
    o = !o;
    if (o) at(direction_, index) = false;
    timerEnabled_ = true;
}

void TestMode::CancelTest() { direction_ = {false, false}; }

int TestMode::flags(bool targetIsQVane, int axis) const
{
    int f = (direction_[0] ? 1 : 0) + (direction_[1] ? 2 : 0) + (off_[0] ? 4 : 0) + (off_[1] ? 8 : 0);
    if (targetIsQVane) f += relayBits(axis);
    return f;
}

bool TestMode::TestTmr_Timer(OutMsgBuffer& out, bool targetIsQVane, int axis)
{
    if (flags(false, 0) == 0) timerEnabled_ = false;
    buildTestCommand(out, flags(targetIsQVane, axis), rate_, power_, targetIsQVane);
    return timerEnabled_;
}

bool TestMode::direction(int index) const { return at(direction_, index); }
bool TestMode::off(int index) const { return at(off_, index); }

uint32_t TestMode::TestcbColour(int index) const { return direction(index) ? colours::Green : colours::LightGrey; }

uint32_t TestMode::TestOffcbColour(int index) const { return off(index) ? colours::Green : colours::LightGrey; }

bool TestMode::applyTestPower(float value)
{
    if (value < testmode::PowerLower || value > testmode::PowerUpper) return false;
    power_ = value;
    return true;
}

bool TestMode::applyTestRate(float value)
{
    if (value < testmode::RateLower || value > testmode::RateUpper) return false;
    rate_ = value;
    return true;
}

std::string TestMode::TestPtbCaption() const { return Format(power_, "0") + "%"; }
std::string TestMode::TestRatetbCaption() const { return Format(rate_, "0"); }

void buildTestCommand(OutMsgBuffer& out, int flags, float rate, float power, bool targetIsQVane)
{
    int i = 0;
    if (!targetIsQVane) {
        out[i++] = 6;
        out[i++] = msg::TestDrive;
    } else {
        out[i++] = 7;
        out[i++] = msg::RelayMarker;
        out[i++] = msg::TestDrive;
    }
    out[i++] = static_cast<int16_t>(flags);
    out[i++] = CInt(rate);
    // 2.55 per percent taken as the exact decimal (power * 255 / 100), so 50 % is exactly
    // 127.5 and rounds to the even 128.
    out[i++] = CInt(static_cast<double>(power) * 255.0 / 100.0);
    putChecksum(out);
}

void buildTuningDrive(OutMsgBuffer& out, int index, bool targetIsQVane, int axis)
{
    if (index != 0 && index != 1) raiseSubscript();
    const int motorBit = 1 << index;
    if (!targetIsQVane) {
        out[0] = 4;
        out[1] = msg::TuningDrive;
        out[2] = static_cast<int16_t>(motorBit);
    } else {
        out[0] = 5;
        out[1] = msg::RelayMarker;
        out[2] = msg::TuningDrive;
        out[3] = static_cast<int16_t>(motorBit + relayBits(axis));
    }
    putChecksum(out);
}

} // namespace kdx
