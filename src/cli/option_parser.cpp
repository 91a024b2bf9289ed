#include "cli/option_parser.h"

#include <algorithm>
#include <optional>
#include <ostream>
#include <stdexcept>

namespace kdx::cli {

namespace {

// Index of the declared option spelled `word`, or -1.
int findOption(std::span<const OptionDecl> options, std::string_view word)
{
    for (std::size_t i = 0; i < options.size(); ++i)
        if (word == options[i].name || (options[i].alias && word == options[i].alias)) return static_cast<int>(i);
    return -1;
}

std::string quoted(std::string_view word) { return "'" + std::string(word) + "'"; }

// Appends each '\n'-separated line of `lines` with a newline: the first after
// `first`, the others after `rest`.
void appendLines(std::string& out, std::string_view lines, std::string_view first, std::string_view rest)
{
    std::string_view prefix = first;
    for (;;) {
        const auto end = lines.find('\n');
        out.append(prefix).append(lines.substr(0, end)).push_back('\n');
        if (end == std::string_view::npos) return;
        lines.remove_prefix(end + 1);
        prefix = rest;
    }
}

} // namespace

const Arguments::Given& Arguments::given(std::string_view option) const
{
    const int i = findOption(command_->syntax.options, option);
    if (i < 0)
        throw std::logic_error("kdxctl " + std::string(command_->name) + " declares no option " + std::string(option));
    return given_[static_cast<std::size_t>(i)];
}

bool Arguments::has(std::string_view option) const { return given(option).count > 0; }

const std::string& Arguments::value(std::string_view option) const
{
    static const std::string none;
    const auto& values = given(option).values;
    return values.empty() ? none : values.back();
}

const std::vector<std::string>& Arguments::values(std::string_view option) const { return given(option).values; }

std::vector<std::pair<std::string, std::string>> Arguments::inOrder(
    std::initializer_list<std::string_view> options) const
{
    std::vector<int> wanted;
    for (std::string_view o : options) {
        given(o); // an undeclared option is a programming error
        wanted.push_back(findOption(command_->syntax.options, o));
    }
    std::vector<std::pair<std::string, std::string>> words;
    for (const auto& [index, value] : order_) {
        if (index < 0) words.emplace_back("", value);
        else if (std::find(wanted.begin(), wanted.end(), index) != wanted.end())
            words.emplace_back(command_->syntax.options[static_cast<std::size_t>(index)].name, value);
    }
    return words;
}

int Arguments::usageError(CommandIo& io, std::string_view what) const { return cli::usageError(io, *command_, what); }

std::variant<Arguments, std::string> parseArguments(const Command& command, std::span<const std::string> args)
{
    const std::span<const OptionDecl> options = command.syntax.options;
    const PositionalDecl& positional = command.syntax.positionals;
    Arguments parsed(command, options.size());
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& word = args[i];
        if (word.empty() || word[0] != '-') {
            if (std::ssize(parsed.positionals_) < positional.max) {
                parsed.positionals_.push_back(word);
                parsed.order_.emplace_back(-1, word);
                continue;
            }
            if (positional.max == 0) return "unexpected argument " + quoted(word);
            std::string text = positional.extra;
            if (const auto at = text.find("{}"); at != std::string::npos) text.replace(at, 2, word);
            return text;
        }
        std::string_view name = word;
        std::optional<std::string> attached; // the VALUE of --name=VALUE
        int index = findOption(options, name);
        if (const auto eq = word.find('='); index < 0 && word.starts_with("--") && eq != std::string::npos) {
            name = name.substr(0, eq);
            index = findOption(options, name);
            if (index >= 0 && options[static_cast<std::size_t>(index)].takes == Takes::Nothing)
                return std::string(name) + " takes no value";
            attached = word.substr(eq + 1);
        }
        if (index < 0) return "unknown option " + quoted(word);
        const OptionDecl& option = options[static_cast<std::size_t>(index)];
        Arguments::Given& given = parsed.given_[static_cast<std::size_t>(index)];
        if (given.count > 0 && !option.repeats) return std::string(name) + " given twice";
        ++given.count;
        if (attached) {
            given.values.push_back(std::move(*attached));
        } else if (option.takes == Takes::Value) {
            if (i + 1 >= args.size()) return std::string(name) + " needs " + option.needs;
            given.values.push_back(args[++i]);
        } else {
            continue;
        }
        parsed.order_.emplace_back(index, given.values.back());
    }
    for (std::size_t i = 0; i < options.size(); ++i) {
        const Arguments::Given& given = parsed.given_[i];
        const bool present = given.count > 0 && (options[i].takes != Takes::Value || !given.values.back().empty());
        if (options[i].required && !present) return std::string(options[i].name) + " is required";
    }
    if (std::ssize(parsed.positionals_) < positional.min) return std::string(positional.missing);
    return parsed;
}

std::string usageText(const Syntax& syntax)
{
    std::string text;
    appendLines(text, syntax.synopsis, "", "");
    text += '\n';
    appendLines(text, syntax.about, "", "");
    text += '\n';
    std::vector<std::pair<std::string, std::string_view>> rows;
    if (syntax.positionals.help) rows.emplace_back(syntax.positionals.name, syntax.positionals.help);
    for (const OptionDecl& o : syntax.options) {
        std::string label = o.name;
        if (o.alias) label.append(", ").append(o.alias);
        if (o.metavar) label.append(" ").append(o.metavar);
        rows.emplace_back(std::move(label), o.help);
    }
    const std::string indent(static_cast<std::size_t>(syntax.helpColumn), ' ');
    for (auto& [label, help] : rows) {
        label.insert(0, "  ");
        label.resize(std::max(indent.size(), label.size() + 2), ' ');
        appendLines(text, help, label, indent);
    }
    if (!rows.empty()) text += '\n';
    text += "example:\n";
    appendLines(text, syntax.example, "  ", "  ");
    return text;
}

int usageError(CommandIo& io, const Command& command, std::string_view what)
{
    if (command.syntax.usageAfterError)
        io.err << "kdxctl: " << command.name << ": " << what << "\n" << usageText(command.syntax);
    else io.err << "kdxctl " << command.name << ": " << what << " (try kdxctl " << command.name << " --help)\n";
    return 2;
}

} // namespace kdx::cli
