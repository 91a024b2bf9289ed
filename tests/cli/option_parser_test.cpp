// The argument parser every kdxctl command shares, on a syntax that uses each of its
// features: what it makes of a command line, or the usage error it reports.
#include "cli/option_parser.h"

#include <gtest/gtest.h>

using namespace kdx::cli;

namespace {

const OptionDecl kOptions[] = {
    {.name = "--port", .takes = Takes::Value, .repeats = true},
    {.name = "-o", .alias = "--output", .takes = Takes::Value, .needs = "a file name"},
    {.name = "--simulate", .takes = Takes::OptionalValue},
    {.name = "--tsv"},
    {.name = "--axis", .takes = Takes::Value, .required = true},
};
const Syntax kSyntax{
    .synopsis = "",
    .about = "",
    .options = kOptions,
    .positionals = {.min = 1, .max = 2, .missing = "no file given", .extra = "two files at most ('{}' is extra)"}};
const Command kCommand{"demo", "", kSyntax, nullptr};

// "--port=A,B --tsv files=f" for what was given, or "error: WHAT".
std::string outcome(const std::vector<std::string>& args)
{
    const auto parsed = parseArguments(kCommand, args);
    if (const auto* error = std::get_if<std::string>(&parsed)) return "error: " + *error;
    const auto& given = std::get<Arguments>(parsed);
    std::string text;
    for (const char* option : {"--port", "-o", "--simulate", "--tsv", "--axis"}) {
        if (!given.has(option)) continue;
        text += option;
        for (std::size_t i = 0; i < given.values(option).size(); ++i) text += (i ? "," : "=") + given.values(option)[i];
        text += ' ';
    }
    text += "files=";
    for (const auto& f : given.positionals()) text += f + (&f == &given.positionals().back() ? "" : ",");
    return text;
}

} // namespace

TEST(OptionParser, CommandLinesAndUsageErrors)
{
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"--axis", "a", "f"}, "--axis=a files=f"},
        {{"f", "--port", "A", "g", "--port=B", "--axis=a"}, "--port=A,B --axis=a files=f,g"},
        {{"--axis", "a", "--output", "x", "f"}, "-o=x --axis=a files=f"},
        {{"--axis", "--tsv", "f"}, "--axis=--tsv files=f"}, // a value is the next word, whatever it is
        {{"--simulate", "--axis", "a", "f"}, "--simulate --axis=a files=f"},
        {{"--simulate=qvane", "--axis", "a", "f"}, "--simulate=qvane --axis=a files=f"},
        {{"--axis", "a", "--axis", "b", "f"}, "error: --axis given twice"},
        {{"--axis", "a", "-o", "x", "--output", "y", "f"}, "error: --output given twice"},
        {{"--axis", "a", "--bogus", "f"}, "error: unknown option '--bogus'"},
        {{"--axis", "a", "-o=x", "f"}, "error: unknown option '-o=x'"},
        {{"--axis", "a", "-", "f"}, "error: unknown option '-'"},
        {{"--axis", "a", "--tsv=yes", "f"}, "error: --tsv takes no value"},
        {{"--axis", "a", "f", "--output"}, "error: --output needs a file name"},
        {{"f", "--axis"}, "error: --axis needs a value"},
        {{"f"}, "error: --axis is required"},
        {{"--axis=", "f"}, "error: --axis is required"},
        {{"--axis", "a"}, "error: no file given"},
        {{"--axis", "a", "f", "g", "h", "--bogus"}, "error: two files at most ('h' is extra)"},
    };
    for (const auto& [args, want] : cases) EXPECT_EQ(outcome(args), want) << ::testing::PrintToString(args);
}
