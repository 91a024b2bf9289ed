#pragma once
// kdxctl's one argument parser. A command declares its options and positional
// arguments in a Syntax; the parser checks a command line against it and hands the
// command its values, or one line saying what is wrong. The same declarations make
// the command's --help text.
#include "cli/command.h"

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace kdx::cli {

enum class Takes {
    Nothing,
    Value,         // "--port DEV" or "--port=DEV"
    OptionalValue, // "--simulate" alone, or "--simulate=qvane"
};

struct OptionDecl {
    const char* name;            // "--port", "-o"
    const char* alias = nullptr; // a second spelling: "--output"
    Takes takes = Takes::Nothing;
    const char* metavar = nullptr; // the value in the help column: "DEV"
    const char* needs = "a value"; // ends "--port needs ..." when the value is missing
    bool repeats = false;          // may be given more than once; every value is kept
    bool required = false;         // "--port is required" without it (or with an empty value)
    const char* help = "";         // help column; each '\n' starts a continuation line
};

struct PositionalDecl {
    int min = 0;
    int max = 0;
    const char* missing = "";   // usage error when fewer than min are given
    const char* extra = "";     // ... when more than max; "{}" stands for the first extra one
    const char* name = nullptr; // with help: a row before the options in the help text
    const char* help = nullptr;
};

// The texts are lines separated by '\n', without a final newline.
struct Syntax {
    const char* synopsis; // "usage: kdxctl NAME ...", one line or more
    const char* about;    // the paragraph under it
    std::span<const OptionDecl> options = {};
    PositionalDecl positionals = {};
    int helpColumn = 0;           // column where the options' help starts
    const char* example = "";     // the lines under "example:"
    bool usageAfterError = false; // a usage error prints "kdxctl: NAME: WHAT" and the whole usage
};

// A command line that matched its command's syntax. Options are named by any of their
// spellings; naming one the command does not declare throws std::logic_error.
class Arguments {
public:
    // Whether the option (any of its spellings) was given.
    bool has(std::string_view option) const;
    // Its last value; empty when it was not given or given without a value.
    const std::string& value(std::string_view option) const;
    // Every value it was given, in order.
    const std::vector<std::string>& values(std::string_view option) const;
    const std::vector<std::string>& positionals() const { return positionals_; }
    // The positionals and the values of the named options, in command-line order, each
    // as {option as declared, or "" for a positional; the value}.
    std::vector<std::pair<std::string, std::string>> inOrder(std::initializer_list<std::string_view> options) const;

    // Reports a usage error of this command on stderr; returns 2.
    int usageError(CommandIo& io, std::string_view what) const;

private:
    friend std::variant<Arguments, std::string> parseArguments(const Command&, std::span<const std::string>);
    Arguments(const Command& command, std::size_t optionCount) : command_(&command), given_(optionCount) {}

    struct Given {
        int count = 0;
        std::vector<std::string> values;
    };
    const Given& given(std::string_view option) const;

    const Command* command_;
    std::vector<Given> given_; // one per declared option, in declaration order
    std::vector<std::string> positionals_;
    std::vector<std::pair<int, std::string>> order_; // {option index, or -1 for a positional; value}
};

// Checks args (the words after the command name) against the command's syntax: the
// parsed arguments, or the text of the usage error. A value option takes the next word
// whatever it is; "--name=VALUE" works for long options that take a value.
std::variant<Arguments, std::string> parseArguments(const Command& command, std::span<const std::string> args);

// The full --help text of a command, made from its declarations.
std::string usageText(const Syntax& syntax);

// One usage error on stderr, "kdxctl NAME: WHAT (try kdxctl NAME --help)" (or in the
// command's own form); returns 2.
int usageError(CommandIo& io, const Command& command, std::string_view what);

} // namespace kdx::cli
