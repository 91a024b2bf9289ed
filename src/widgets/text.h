#pragma once
// The program's texts are std::string_view constants of the Qt-free code; this is the
// one conversion to what a control shows.
#include <QString>

#include <string_view>

namespace kdx {

inline QString qs(std::string_view s) { return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size())); }

// Gives a label or a button `text` only when it shows another: an unchanged text costs no
// layout, no accessibility event and no repaint.
template <class Control>
void showText(Control* control, const QString& text)
{
    if (control->text() != text) control->setText(text);
}
template <class Control>
void showText(Control* control, std::string_view text)
{
    showText(control, qs(text));
}

} // namespace kdx
