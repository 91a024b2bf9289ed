// kdxctl tune's refusals: each usage error is one line naming what is wrong, and no
// byte reaches the module, so a mistyped limit can never put a wild gain on the motor.
#include "cli/run_kdxctl.h"
#include "scripted_module.h"

#include <gtest/gtest.h>

using namespace kdx::test;

TEST(KdxctlTune, UsageErrorsSendNothing)
{
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"--motor", "3"}, "--motor is 1 or 2"},
        {{"--motor", "1", "--sweep", "30"}, "--sweep is 4 or 10"},
        {{"--motor", "1", "--max-factor", "0.5"}, "--max-factor is a number from 1 to 10"},
        {{"--motor", "1", "--max-factor", "20"}, "--max-factor is a number from 1 to 10"},
        {{"--motor", "1", "--search", "P,V1"}, "--search takes names from P, D, I, IA, each once, e.g. P,D"},
        {{"--motor", "1", "--search", "P,P"}, "--search takes names from P, D, I, IA, each once, e.g. P,D"},
        {{"--motor", "1", "--gains", "25"}, "--gains is P,D in %, each 0 to 12700, e.g. 25,50"},
        {{"--motor", "1", "--gains", "-5,50"}, "--gains is P,D in %, each 0 to 12700, e.g. 25,50"},
        {{"--motor", "1", "--gains", "25,13000"}, "--gains is P,D in %, each 0 to 12700, e.g. 25,50"},
    };
    for (const auto& [args, says] : cases) {
        ScriptedModule module({});
        std::vector<std::string> argv{"tune", "--port", module.path()};
        argv.insert(argv.end(), args.begin(), args.end());
        const KdxctlResult r = kdxctl(argv);
        EXPECT_EQ(r.code, 2) << says;
        EXPECT_EQ(r.err, "kdxctl tune: " + says + " (try kdxctl tune --help)\n");
        EXPECT_TRUE(module.received().empty()) << says;
    }
}
