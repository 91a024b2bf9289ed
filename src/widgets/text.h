#pragma once
// The program's texts are std::string_view constants of the Qt-free code; this is the
// one conversion to what a control shows.
#include <QString>

#include <string_view>

namespace kdx {

inline QString qs(std::string_view s) { return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size())); }

} // namespace kdx
