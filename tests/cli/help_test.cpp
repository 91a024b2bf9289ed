// kdxctl's help: every command is listed, and every command's --help is the text users
// know (tests/data/kdxctl_help), explains each option of its synopsis and shows the
// command in use.
#include "cli/command.h"
#include "cli/run_kdxctl.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

using namespace kdx;

namespace {

using Result = test::KdxctlResult;
using test::kdxctl;

std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> result;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) result.push_back(line);
    return result;
}

// Options named in the synopsis (the lines before the first blank one): "[--axis
// tilt|roll|pan]" gives --axis, "--simulate[=qvane]" gives --simulate.
std::set<std::string> synopsisOptions(const std::vector<std::string>& text)
{
    std::set<std::string> options;
    for (const std::string& line : text) {
        if (line.empty()) break;
        std::istringstream words(line);
        for (std::string w; words >> w;) {
            const auto begin = w.find_first_not_of("[(|");
            if (begin == std::string::npos || w[begin] != '-') continue;
            const auto end = w.find_first_of("[]=|)", begin);
            options.insert(w.substr(begin, end == std::string::npos ? std::string::npos : end - begin));
        }
    }
    return options;
}

// Options explained in the body: lines "  -o, --output OUT   what it does", the option
// column ending at the first double space.
std::set<std::string> explainedOptions(const std::vector<std::string>& text)
{
    std::set<std::string> options;
    for (const std::string& line : text) {
        const auto start = line.find_first_not_of(' ');
        if (start == 0 || start == std::string::npos || line[start] != '-') continue;
        const auto gap = line.find("  ", start);
        if (gap == std::string::npos || line.find_first_not_of(' ', gap) == std::string::npos) continue;
        std::istringstream column(line.substr(start, gap - start));
        for (std::string part; std::getline(column, part, ',');) {
            part.erase(0, part.find_first_not_of(' '));
            options.insert(part.substr(0, part.find_first_of(" =")));
        }
    }
    return options;
}

} // namespace

TEST(KdxctlHelp, ListsEveryCommandWithItsSummary)
{
    const Result help = kdxctl({"--help"});
    EXPECT_EQ(help.code, 0);
    EXPECT_EQ(help.err, "");
    ASSERT_FALSE(cli::commands().empty());
    for (const auto& c : cli::commands()) {
        const std::string name = c.name, summary = c.summary;
        EXPECT_FALSE(summary.empty()) << name;
        EXPECT_NE(help.out.find("\n  " + name + " "), std::string::npos) << name << " is not listed";
        EXPECT_NE(help.out.find(summary + "\n"), std::string::npos) << name;
    }
    EXPECT_EQ(kdxctl({"-h"}).out, help.out);
    // Without a command the same text goes to standard error as a usage error.
    const Result bare = kdxctl({});
    EXPECT_EQ(bare.code, 2);
    EXPECT_EQ(bare.err, help.out);
    EXPECT_EQ(bare.out, "");
    // The project's version, as kdxtool --version shows it.
    const Result version = kdxctl({"--version"});
    EXPECT_EQ(version.code, 0);
    EXPECT_EQ(version.out, "kdxctl " KDX_PROJECT_VERSION "\n");
}

TEST(KdxctlHelp, EachCommandExplainsItsOptionsAndShowsAnExample)
{
    for (const auto& c : cli::commands()) {
        const std::string name = c.name;
        SCOPED_TRACE(name);
        std::ifstream golden(std::string(KDX_TEST_DATA) + "/kdxctl_help/" + name + ".txt", std::ios::binary);
        const std::string usage(std::istreambuf_iterator<char>(golden), {});
        for (const char* flag : {"--help", "-h"}) {
            const Result r = kdxctl({name, flag});
            EXPECT_EQ(r.code, 0) << flag;
            EXPECT_EQ(r.out, usage) << flag;
            EXPECT_EQ(r.err, "") << flag;
        }
        // --help wins wherever it stands, so nothing runs (no port is opened).
        EXPECT_EQ(kdxctl({name, "--port", "/nonexistent/tty", "--help"}).out, usage);

        const auto text = lines(usage);
        ASSERT_FALSE(text.empty());
        EXPECT_EQ(text[0].rfind("usage: kdxctl " + name, 0), 0u) << text[0];
        const auto explained = explainedOptions(text);
        for (const std::string& option : synopsisOptions(text))
            EXPECT_TRUE(explained.count(option)) << option << " is in the synopsis but not explained";

        bool inExample = false, shown = false;
        for (const std::string& line : text) {
            EXPECT_LE(line.size(), 80u) << line;
            if (line.rfind("example", 0) == 0) inExample = true;
            if (inExample && line.find("kdxctl " + name) != std::string::npos) shown = true;
        }
        EXPECT_TRUE(shown) << "no example line running kdxctl " << name;
    }
}
