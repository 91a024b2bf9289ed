#pragma once
// Columns of text lined up for a terminal: two spaces between columns, each as wide as
// its widest cell, trailing blanks dropped.
#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

namespace kdx::cli {

// Prints `cells` (the header line first) with column i left-aligned when left(i) holds,
// right-aligned otherwise.
template <class Left>
void printAligned(std::ostream& out, const std::vector<std::vector<std::string>>& cells, Left left)
{
    std::vector<std::size_t> width;
    for (const auto& line : cells) {
        width.resize(std::max(width.size(), line.size()), 0);
        for (std::size_t i = 0; i < line.size(); ++i) width[i] = std::max(width[i], line[i].size());
    }
    for (const auto& line : cells) {
        std::string text;
        for (std::size_t i = 0; i < line.size(); ++i) {
            const std::size_t pad = width[i] - line[i].size();
            if (i) text += "  ";
            if (!left(i)) text.append(pad, ' ');
            text += line[i];
            if (left(i)) text.append(pad, ' ');
        }
        while (!text.empty() && text.back() == ' ') text.pop_back();
        out << text << "\n";
    }
}

} // namespace kdx::cli
