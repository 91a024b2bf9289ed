#include "telemetry/log_file_name.h"

#include <cstdint>

namespace kdx {

namespace {

bool isSeparator(char c) { return c == '/' || c == '\\'; }

std::size_t fileNameStart(std::string_view path)
{
    const std::size_t sep = path.find_last_of("/\\");
    return sep == std::string_view::npos ? 0 : sep + 1;
}

// Position of the extension mark: the first "." of the file name that is not its first
// character; npos when there is none.
std::size_t extensionMark(std::string_view path, std::size_t nameStart)
{
    if (nameStart + 1 >= path.size()) return std::string_view::npos;
    return path.find('.', nameStart + 1);
}

bool isContinuation(unsigned char c) { return (c & 0xC0) == 0x80; }

// Length of the UTF-8 sequence a lead byte starts; 0 for a byte that cannot start one.
std::size_t sequenceLength(unsigned char lead)
{
    if (lead < 0x80) return 1;
    if ((lead & 0xE0) == 0xC0) return 2;
    if ((lead & 0xF0) == 0xE0) return 3;
    if ((lead & 0xF8) == 0xF0) return 4;
    return 0;
}

uint32_t decodeUtf8(std::string_view s)
{
    const auto b = [&](std::size_t i) { return static_cast<unsigned char>(s[i]); };
    if (s.size() == 2) return (b(0) & 0x1Fu) << 6 | (b(1) & 0x3Fu);
    if (s.size() == 3) return (b(0) & 0x0Fu) << 12 | (b(1) & 0x3Fu) << 6 | (b(2) & 0x3Fu);
    return (b(0) & 0x07u) << 18 | (b(1) & 0x3Fu) << 12 | (b(2) & 0x3Fu) << 6 | (b(3) & 0x3Fu);
}

std::string encodeUtf8(uint32_t cp)
{
    std::string s;
    if (cp < 0x80) {
        s += static_cast<char>(cp);
    } else if (cp < 0x800) {
        s += static_cast<char>(0xC0 | (cp >> 6));
        s += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        s += static_cast<char>(0xE0 | (cp >> 12));
        s += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        s += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        s += static_cast<char>(0xF0 | (cp >> 18));
        s += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        s += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        s += static_cast<char>(0x80 | (cp & 0x3F));
    }
    return s;
}

// The character after `c` (one UTF-8 character) in the numbering order.
std::string advance(std::string_view c)
{
    if (sequenceLength(static_cast<unsigned char>(c[0])) != c.size()) return std::string(c); // not UTF-8: left as is
    uint32_t cp = c.size() == 1 ? static_cast<unsigned char>(c[0]) : decodeUtf8(c);
    if (cp == '9') cp = 'A' - 1;
    ++cp;
    if (cp < 0x80 && isSeparator(static_cast<char>(cp))) ++cp;
    if (cp >= 0xD800 && cp <= 0xDFFF) cp = 0xE000; // surrogates are not characters
    if (cp > 0x10FFFF) return std::string(c);      // the last code point stays
    return encodeUtf8(cp);
}

} // namespace

bool NextLogFileName(std::string& caption, std::string& lastNameChar)
{
    const std::size_t nameStart = fileNameStart(caption);
    if (nameStart >= caption.size()) return false;
    const std::size_t mark = extensionMark(caption, nameStart);
    const std::size_t charEnd = mark == std::string::npos ? caption.size() : mark;
    // Step back over UTF-8 continuation bytes to the start of the character.
    std::size_t charStart = charEnd - 1;
    while (charStart > nameStart && isContinuation(static_cast<unsigned char>(caption[charStart])) &&
           charEnd - charStart < 4)
        --charStart;
    const std::string next = advance(std::string_view(caption).substr(charStart, charEnd - charStart));
    caption.replace(charStart, charEnd - charStart, next);
    lastNameChar = next;
    return true;
}

std::string ChangedLogFileName(std::string_view chosen)
{
    std::string name(chosen);
    if (extensionMark(name, fileNameStart(name)) == std::string::npos) name += logname::DefaultExtension;
    return name;
}

} // namespace kdx
