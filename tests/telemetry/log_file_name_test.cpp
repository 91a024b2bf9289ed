#include "telemetry/log_file_name.h"

#include <gtest/gtest.h>

#include <string>

using namespace kdx;

TEST(LogFileName, NextNumbersRunOneToNineThenLetters)
{
    // Loading the window runs Next once on the design-time caption; Stop runs it after each log.
    std::string caption(logname::DefaultCaption), last(logname::InitialLastNameChar), seen;
    for (int i = 0; i < 11; ++i) {
        ASSERT_TRUE(NextLogFileName(caption, last));
        seen += caption.substr(8, 4) + " ";
    }
    EXPECT_EQ(seen, "Run1 Run2 Run3 Run4 Run5 Run6 Run7 Run8 Run9 RunA RunB ");
    EXPECT_EQ(caption, "C:\\Temp\\RunB.csv");
    EXPECT_EQ(last, "B");
}

TEST(LogFileName, NextAndChangeActOnTheFileNameOnly)
{
    struct Case {
        const char* before;
        const char* after;
        const char* last;
    };
    for (const Case& c : {
             Case{"/home/ann/logs.2024/Run9.csv", "/home/ann/logs.2024/RunA.csv", "A"},
             {"D:\\Logs.old\\v1.2\\RunZ.csv", "D:\\Logs.old\\v1.2\\Run[.csv", "["},
             {"Run5.old.csv", "Run6.old.csv", "6"},
             {"/data/v2.1/Run", "/data/v2.1/Ruo", "o"},                      // no extension: the last character
             {"/tmp/.log", "/tmp/.loh", "h"},                                // a leading dot belongs to the name
             {"/tmp/Run[.csv", "/tmp/Run].csv", "]"},                        // never becomes a folder separator
             {"/tmp/Lauf\xC3\xA9.csv", "/tmp/Lauf\xC3\xAA.csv", "\xC3\xAA"}, // a character, not a byte
         }) {
        std::string caption = c.before, last = "0";
        ASSERT_TRUE(NextLogFileName(caption, last)) << c.before;
        EXPECT_EQ(caption + " " + last, std::string(c.after) + " " + c.last);
    }
    for (const char* noName : {"", "/tmp/", "C:\\Temp\\"}) {
        std::string caption = noName, last = "0";
        EXPECT_FALSE(NextLogFileName(caption, last)) << noName;
        EXPECT_EQ(caption + last, std::string(noName) + "0");
    }
    struct Chosen {
        const char* chosen;
        const char* caption;
    };
    for (const Chosen& c : {Chosen{"/home/ann/Run", "/home/ann/Run.csv"},
                            {"/home/ann/logs.2024/Run", "/home/ann/logs.2024/Run.csv"},
                            {"D:\\Logs.old\\Test", "D:\\Logs.old\\Test.csv"},
                            {"/home/ann/Run.Log", "/home/ann/Run.Log"},
                            {"/home/ann/.hidden", "/home/ann/.hidden.csv"}})
        EXPECT_EQ(ChangedLogFileName(c.chosen), c.caption);
}
