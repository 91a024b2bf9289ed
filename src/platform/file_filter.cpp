#include "platform/file_filter.h"

namespace kdx {

std::vector<FilterEntry> parseFilter(const std::string& filter)
{
    std::vector<std::string> parts;
    std::string cur;
    for (char c : filter) {
        if (c == '|') {
            parts.push_back(cur);
            cur.clear();
        } else {
            cur += c;
        }
    }
    parts.push_back(cur);
    std::vector<FilterEntry> out;
    for (std::size_t i = 0; i + 1 < parts.size(); i += 2) out.push_back({parts[i], parts[i + 1]});
    return out;
}

std::string toQtFilter(const std::string& filter)
{
    std::string out;
    for (const auto& e : parseFilter(filter)) {
        if (!out.empty()) out += ";;";
        std::string patterns = e.pattern;
        for (auto& c : patterns)
            if (c == ';') c = ' ';
        if (e.caption.find('(') != std::string::npos) out += e.caption;
        else out += e.caption + " (" + patterns + ")";
        // Qt reads the patterns from the brackets; make sure they are the real ones.
        if (e.caption.find("(" + patterns + ")") == std::string::npos && e.caption.find('(') != std::string::npos)
            out += " (" + patterns + ")";
    }
    return out;
}

} // namespace kdx
