#pragma once
// The system's dialog filters ("Text (*.a)|*.a|All Files (*.*)|*.*") as Qt wants them.
#include <string>
#include <vector>

namespace kdx {

struct FilterEntry {
    std::string caption;
    std::string pattern;
};

// Splits the system's filter string into caption/pattern pairs; a trailing odd piece
// is dropped.
std::vector<FilterEntry> parseFilter(const std::string& filter);
// Qt's form: "Caption (*.a);;All Files (*.*)". A caption that already names its pattern
// is kept; otherwise the pattern is added in brackets.
std::string toQtFilter(const std::string& filter);

} // namespace kdx
