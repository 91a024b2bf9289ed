#include "core/host_numeric.h"

#include <gtest/gtest.h>

using namespace kdx;

TEST(HostNumeric, IntegerConversionsRoundHalfToEvenAndOverflow)
{
    struct Case {
        double in;
        int out;
    };
    for (const Case& c : {Case{2.5, 2},
                          {3.5, 4},
                          {-2.5, -2},
                          {-3.5, -4},
                          {0.5, 0},
                          {1.5, 2},
                          {127.5, 128},
                          {-0.4, 0},
                          {32767.4, 32767},
                          {-32768.0, -32768}})
        EXPECT_EQ(CInt(c.in), c.out) << c.in;
    EXPECT_THROW(CInt(32767.5), HostError);
    EXPECT_THROW(CInt(-32768.6), HostError);
    EXPECT_THROW(CInt(0.0 / 0.0), HostError);
    EXPECT_EQ(CLng(2147483647.0), 2147483647);
    EXPECT_EQ(CLng(5460.5), 5460);
    EXPECT_THROW(CLng(2147483647.5), HostError);
    EXPECT_EQ(Int(-0.5), -1.0);
    EXPECT_EQ(Int(2666.67), 2666.0);
}

TEST(HostNumeric, ValReadsTheLongestLeadingNumber)
{
    struct Case {
        const char* text;
        double value;
    };
    for (const Case& c : {Case{"2500", 2500},
                          {"  -12.5kg", -12.5},
                          {"abc", 0},
                          {"", 0},
                          {"20.5", 20.5},
                          {"1e3", 1000},
                          {"1e", 1},
                          {".5", 0.5},
                          {"-", 0},
                          {"&H0A", 10},
                          {"&h0a", 10},
                          {"&HFF", 255},
                          {"&HFFFF", -1},
                          {"&HZZ", 0},
                          {"&H1G", 1},
                          {"3 4", 3},
                          {"+7", 7},
                          {"&O17", 15}})
        EXPECT_DOUBLE_EQ(Val(c.text), c.value) << c.text;
}

TEST(HostNumeric, FormatPatternsRoundHalfAwayFromZero)
{
    struct Case {
        double v;
        const char* pattern;
        const char* text;
    };
    for (const Case& c : {Case{0.125, "0.00", "0.13"},   {-0.125, "0.00", "-0.13"}, {2.0625, "0.00", "2.06"},
                          {20.0, "0.0", "20.0"},         {0.5, "0%", "50%"},        {1.0, "0%", "100%"},
                          {0.96, "0%", "96%"},           {12.5, "0", "13"},         {-12.5, "0", "-13"},
                          {3.0001831, "0.0", "3.0"},     {5, "00", "05"},           {1234.5, "###0.00", "1234.50"},
                          {0.25, "###0.00", "0.25"},     {7, "##0", "7"},           {-7.4, "###0", "-7"},
                          {99999.99, "0.0", "100000.0"}, {0, "0.00", "0.00"},       {-0.0, "0.0", "0.0"},
                          {1e-20, "0.00", "0.00"},       {2.675, "0.00", "2.68"},   {100000000.0, "0", "100000000"}})
        EXPECT_EQ(Format(c.v, c.pattern), c.text) << c.v << " " << c.pattern;
}

TEST(HostNumeric, BytesOfAValueUseTwosComplement)
{
    EXPECT_EQ(lowByte(-1), 255);
    EXPECT_EQ(highByte(-1), 255);
    EXPECT_EQ(lowByte(-128), 128);
    EXPECT_EQ(highByte(-128), 255);
    EXPECT_EQ(lowByte(2666), 106);
    EXPECT_EQ(highByte(2666), 10);
    EXPECT_EQ(signedWord(0, 128), -32768);
    EXPECT_EQ(signedWord(255, 255), -1);
    EXPECT_EQ(Str(10), " 10");
    EXPECT_EQ(Str(-3), "-3");
}
