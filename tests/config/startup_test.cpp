#include "config/startup.h"

#include <gtest/gtest.h>

using namespace kdx;

// The desktop passes one path in double quotes; the program strips the first and last
// character without looking at them, and tells the file by its last three characters.
TEST(StartupFile, CommandLineNamesAConfigurationATuningFileOrARecording)
{
    using K = StartupFileKind;
    struct Case {
        const char* commandLine;
        K kind;
        const char* path;
    };
    const Case cases[] = {
        {"\"/home/u/a.kdx\"", K::Configuration, "/home/u/a.kdx"},
        {"\"t.btf\"", K::TuningFile, "t.btf"},
        {"\"C:\\Logs\\Run 3.Log\"", K::Recording, "C:\\Logs\\Run 3.Log"},
        {"\"a.KDX\"", K::Ignored, "a.KDX"},
        {"\"t.bTf\"", K::Ignored, "t.bTf"},
        {"\"a.kdxx\"", K::Recording, "a.kdxx"},
        {"'kdx'", K::Configuration, "kdx"}, // any enclosing pair, even no dot
        {"\"ab\"", K::Recording, "ab"},     // a name shorter than an extension
        {"\"x\"", K::None, ""},
        {"", K::None, ""},
    };
    for (const Case& c : cases) {
        const StartupFile file = classifyCommandLine(c.commandLine);
        EXPECT_EQ(file.kind, c.kind) << c.commandLine;
        EXPECT_EQ(file.path, c.path) << c.commandLine;
    }
}
