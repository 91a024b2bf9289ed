#include "core/terminate_report.h"

#include <gtest/gtest.h>

#include <exception>
#include <ios>
#include <stdexcept>

using namespace kdx;

namespace {

// Thrown where nothing catches it: a noexcept caller ends in std::terminate.
[[noreturn]] void throwIosFailure() { throw std::ios_base::failure("basic_filebuf::underflow error reading the file"); }
[[noreturn]] void throwInt() { throw 42; }
void escape(void (*thrower)()) noexcept { thrower(); }

} // namespace

TEST(TerminateReportDeathTest, AnUncaughtExceptionIsPrintedWithABacktraceBeforeTheAbort)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    struct Case {
        void (*end)();
        const char* expected;
    };
    const Case cases[] = {
        {[] { escape(throwIosFailure); },
         "kdxtool: uncaught exception std::[a-z_:]*failure.*: basic_filebuf::underflow error reading the file"},
        {[] { escape(throwInt); }, "kdxtool: uncaught exception int\n"},
        {[] { std::terminate(); }, "kdxtool: terminate called without an exception\n"},
    };
    for (const Case& c : cases) {
        EXPECT_DEATH(
            {
                installTerminateReport("kdxtool");
                c.end();
            },
            std::string(c.expected) + "(.|\n)*backtrace:\n.*\\[0x[0-9a-f]+\\]");
    }
}
