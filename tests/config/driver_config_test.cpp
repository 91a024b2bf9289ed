#include "config/driver_config.h"
#include "core/host_error.h"

#include <gtest/gtest.h>

#include <functional>

using namespace kdx;

namespace {

HostErrorKind errorOf(const std::function<void()>& f)
{
    try {
        f();
    } catch (const HostError& e) {
        return e.kind();
    }
    return HostErrorKind(-1);
}

} // namespace

TEST(DriverConfig, ImageBytesShowAsTheLabelsShowThem)
{
    using L = ParamLabel;
    const std::tuple<std::vector<std::pair<int, int>>, ParamLabel, const char*> cases[] = {
        {{{2, 208}, {3, 7}}, L::Freqtb, "20.0"},
        {{{2, 0}, {3, 0}}, L::Freqtb, "8.0"}, // 2000 counts; none
        {{{2, 208}, {3, 128}}, L::Freqtb, "8.0"},
        {{{2, 106}, {3, 10}}, L::Freqtb, "15.0"}, // bit 15; floored
        {{{21, 0}, {22, 0}}, L::Ratiotb, "0.0:1"},
        {{{21, 0}, {22, 64}}, L::Ratiotb, "1:1"},
        {{{21, 85}, {22, 21}}, L::Ratiotb, "3.0:1"},
        {{{21, 0}, {22, 128}}, L::Ratiotb, "0.5:1"}, // unsigned
        {{{16, 130}}, L::Axistb, "Pan"},
        {{{16, 131}}, L::Axistb, "Off"},
        {{{8, 128}, {9, 255}}, L::PTermtb, "-100"},
        {{{6, 0}, {7, 255}}, L::PowerHitb, "-1.0"},
        {{{10, 8}}, L::IAngletb, "0.50"},
        {{{14, 20}}, L::PowerErrortb, "1.25"},
        {{{19, 0}, {20, 1}}, L::Gaintb, "100"},
        {{{24, 255}}, L::FPTrimtb, "510"},
    };
    for (int motor = 0; motor < 2; ++motor) {
        for (const auto& [elements, label, caption] : cases) {
            DriverConfig config;
            for (auto [k, v] : elements)
                config.image()[static_cast<std::size_t>(30 * motor + k)] = static_cast<int16_t>(v);
            config.ImageToParams();
            EXPECT_EQ(config.caption(label, motor), caption) << labelName(label) << " motor " << motor;
            EXPECT_EQ(config.reverse(motor), label == L::Axistb) << "bit 7 of the axis byte";
        }
    }
}

TEST(DriverConfig, ParametersWriteTheModuleBytes)
{
    const std::tuple<std::function<void(ParamSet&)>, int, std::vector<int>> cases[] = {
        // element and following
        {[](ParamSet& p) { p.PwmFreqHz[1] = 15000; }, 2, {106, 10}}, // Int(2666.67)
        {[](ParamSet& p) { p.PwmFreqHz[1] = 1000; }, 2, {64, 156}},
        {[](ParamSet& p) { p.PTerm[1] = -100; }, 8, {128, 255}},
        {[](ParamSet& p) { p.DriveRatio[1] = 3; }, 21, {85, 21}},
        {[](ParamSet& p) { p.FixedPosTrim[1] = 3; }, 24, {2}}, // halves go to even
        {[](ParamSet& p) { p.FixedPosTrim[1] = 1; }, 24, {0}},
        {[](ParamSet& p) { p.PowerErrorAngle[1] = 16; }, 14, {256}}, // not reduced to a byte
        {[](ParamSet& p) { p.QVaneAxis[1] = 2.5f; }, 16, {2}},
        {[](ParamSet& p) { p.GainPerc[1] = -5000; }, 19, {0, 206}},
        {[](ParamSet& p) { p.IAngle[1] = 16; }, 10, {0}},
    };
    for (const auto& [set, element, want] : cases) {
        DriverConfig config;
        config.params().PwmFreqHz = {8000, 8000};
        set(config.params());
        config.ParamsToImage();
        EXPECT_EQ(std::vector<int>(config.image().begin() + 30 + element,
                                   config.image().begin() + 30 + element + want.size()),
                  want);
    }
    DriverConfig c;
    c.params().PwmFreqHz = {8000, 8000};
    c.params().QVaneAxis[0] = 2;
    c.setReverse(0, true);
    c.params().FixedPosTrim[0] = 3;
    c.ParamsToImage();
    EXPECT_EQ(c.image()[16], 130);
    c.ImageToParams();
    EXPECT_EQ(c.caption(ParamLabel::FPTrimtb, 0), "4");
}

TEST(DriverConfig, EveryParameterSurvivesTheImage)
{
    DriverConfig a;
    ParamSet& p = a.params();
    // Values the module holds exactly, different per motor so a swapped block shows.
    p = ParamSet{{20000, 16000}, {30, 12.5f},    {55.5f, 100},    {-100, 2500}, {2.5f, 15},
                 {5, 255},       {25, -2550},    {1.25, 15.9375}, {1, 3},       {0, 255},
                 {14, 64},       {-5000, 12700}, {1, 0.5f},       {179, 0},     {358, 90}};
    a.setReverse(1, true);
    a.ParamsToImage();
    DriverConfig b;
    b.image() = a.image();
    b.ImageToParams();
    EXPECT_TRUE(b.params() == a.params());
    EXPECT_TRUE(b.reverse(1) && !b.reverse(0));
    b.ParamsToImage();
    EXPECT_EQ(b.image(), a.image());
}

TEST(DriverConfig, UnownedElementsAreCarriedAndCounted)
{
    MemoryImage img{};
    img[0] = img[15] = img[59] = 100; // elements no parameter owns still count
    img[60] = 99;
    EXPECT_EQ(imageChecksum(img), 44);

    DriverConfig c;
    for (int i = 0; i < 65; ++i) c.image()[static_cast<std::size_t>(i)] = static_cast<int16_t>((i * 37 + 11) % 256);
    const MemoryImage before = c.image();
    c.ImageToParams();
    c.ParamsToImage();
    for (int i : {0, 1, 15, 25, 26, 27, 28, 29, 30, 31, 45, 55, 56, 57, 58, 59, 61, 62, 63, 64})
        EXPECT_EQ(c.image()[i], before[i]) << "element " << i;
    EXPECT_EQ(c.image()[60], imageChecksum(c.image()));

    c.params().PwmFreqHz[1] = 0; // a fault stops the transfer; what it wrote stays
    c.params().PTerm[0] = 50;
    EXPECT_EQ(errorOf([&] { c.ParamsToImage(); }), HostErrorKind::DivisionByZero);
    EXPECT_EQ(c.image()[8], 64);
    c.params().PwmFreqHz[1] = 8000;
    c.params().GainPerc[0] = 1e9f;
    EXPECT_EQ(errorOf([&] { c.ParamsToImage(); }), HostErrorKind::Overflow);
}

TEST(DriverConfig, GainAccessorsAndTheModifiedFlag)
{
    using Put = void (DriverConfig::*)(float, int);
    using Get = float (DriverConfig::*)(int) const;
    const std::tuple<Put, Get, bool> gains[] = {
        {&DriverConfig::PutP, &DriverConfig::GetP, true}, // only P marks the data modified
        {&DriverConfig::PutI, &DriverConfig::GetI, false},   {&DriverConfig::PutIA, &DriverConfig::GetIA, false},
        {&DriverConfig::PutD, &DriverConfig::GetD, false},   {&DriverConfig::PutV1, &DriverConfig::GetV1, false},
        {&DriverConfig::PutV2, &DriverConfig::GetV2, false}, {&DriverConfig::PutG, &DriverConfig::GetG, false}};
    int n = 0;
    for (const auto& row : gains) {
        // Plain copies: clang 14 cannot capture structured bindings in the lambdas below.
        const Put put = std::get<0>(row);
        const Get get = std::get<1>(row);
        const bool marks = std::get<2>(row);
        DriverConfig c;
        std::string events;
        c.setRefreshHandler([&] { events += "refresh "; });
        c.setDataModifiedHandler([&](bool f) { events += f ? "modified " : "clean "; });
        (c.*put)(42.5f, 1);
        EXPECT_EQ((c.*get)(1), 42.5f) << n;
        EXPECT_EQ((c.*get)(0), 0.0f) << n;
        EXPECT_EQ(events, marks ? "modified refresh " : "refresh ") << n;
        EXPECT_EQ(c.GetDataModified(), marks) << n;
        EXPECT_EQ(errorOf([&] { (c.*put)(1, 2); }), HostErrorKind::Subscript) << n;
        EXPECT_EQ(errorOf([&] { (void)(c.*get)(-1); }), HostErrorKind::Subscript) << n++;
    }
    DriverConfig c;
    std::string events;
    c.setRefreshHandler([&] { events += "refresh "; });
    c.setDataModifiedHandler([&](bool f) { events += f ? "modified " : "clean "; });
    c.Reversecb_Click(1, true);
    c.image()[0] = 42;
    c.acceptNewImage(); // a completed read or load
    EXPECT_TRUE(!c.GetDataModified() && c.GetGainsHaveBeenLoaded() && !c.reverse(1));
    EXPECT_EQ(c.caption(ParamLabel::DebIDtb, 0), "42");
    EXPECT_EQ(events, "modified refresh clean refresh ");
}
