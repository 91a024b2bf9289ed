// The logging window's file names: Next, as Stop runs it after every log and the user
// clicks it, over any caption (any bytes, folders with either separator, names with and
// without an extension mark, UTF-8 or not), and Change over any name a dialog returns.
//
// The input is the caption; its first byte says how many Next clicks follow (up to 64).
//
// Checked: Next refuses (and changes nothing) exactly when the caption names no file;
// otherwise it changes only the name's last character before the extension mark, never
// the folders and never the extension; the name it gives differs from the one before,
// so a new log never replaces the previous one; the character it reports is the one it
// put in; text that was valid UTF-8 stays valid. Change keeps the chosen name and adds
// ".csv" only to a file name without an extension mark.
#include "fuzz_support.h"
#include "telemetry/log_file_name.h"

#include <string>
#include <string_view>

namespace {

using namespace kdx;

[[noreturn]] void fail(const char* what) { fuzz::fail("log_name", what); }

bool validUtf8(std::string_view s)
{
    for (std::size_t i = 0; i < s.size();) {
        const auto c = static_cast<unsigned char>(s[i]);
        std::size_t n = c < 0x80 ? 1 : (c >> 5) == 6 ? 2 : (c >> 4) == 14 ? 3 : (c >> 3) == 30 ? 4 : 0;
        if (n == 0 || i + n > s.size()) return false;
        uint32_t cp = n == 1 ? c : c & (0x7F >> n);
        for (std::size_t k = 1; k < n; ++k) {
            const auto b = static_cast<unsigned char>(s[i + k]);
            if ((b & 0xC0) != 0x80) return false;
            cp = cp << 6 | (b & 0x3F);
        }
        const uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
        if (cp < least[n] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return false;
        i += n;
    }
    return true;
}

// Where the file name starts: after the last "/" or "\".
std::size_t nameStart(std::string_view path)
{
    const std::size_t sep = path.find_last_of("/\\");
    return sep == std::string_view::npos ? 0 : sep + 1;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    if (size == 0) return 0;
    const int clicks = 1 + data[0] % 64;
    std::string caption(reinterpret_cast<const char*>(data + 1), size - 1);

    const std::string changed = ChangedLogFileName(caption);
    const std::string_view name = std::string_view(caption).substr(nameStart(caption));
    const bool hasMark = name.size() > 1 && name.find('.', 1) != std::string_view::npos;
    if (changed != (hasMark ? caption : caption + ".csv")) fail("Change altered the chosen name");

    const bool wasUtf8 = validUtf8(caption);
    for (int i = 0; i < clicks; ++i) {
        const std::string before = caption;
        std::string last = "unchanged";
        const bool advanced = NextLogFileName(caption, last);
        const std::size_t start = nameStart(before);
        if (advanced == (start >= before.size())) fail("Next refused a file name, or took a caption without one");
        if (!advanced) {
            if (caption != before || last != "unchanged") fail("a refused Next changed something");
            break;
        }
        // A byte that is not UTF-8 is left as it is; any character advances.
        if (wasUtf8 && caption == before) fail("Next gave the name of the previous log");
        if (nameStart(caption) != start || caption.compare(0, start, before, 0, start) != 0)
            fail("Next changed a folder");
        // Everything from the extension mark on, and everything before the advanced
        // character, stays; the character Next reports is the one now in the name.
        const std::string_view oldName = std::string_view(before).substr(start);
        const std::size_t mark = oldName.size() > 1 ? oldName.find('.', 1) : std::string_view::npos;
        const std::size_t end = mark == std::string_view::npos ? oldName.size() : mark;
        const std::string_view oldTail = oldName.substr(end);
        if (caption.size() < oldTail.size() ||
            caption.compare(caption.size() - oldTail.size(), oldTail.size(), oldTail) != 0)
            fail("Next changed the extension");
        const std::size_t newEnd = caption.size() - oldTail.size();
        if (last.empty() || newEnd < last.size() || caption.compare(newEnd - last.size(), last.size(), last) != 0)
            fail("the character Next reports is not the one in the name");
        if (caption.compare(0, newEnd - last.size(), before, 0, newEnd - last.size()) != 0 ||
            newEnd - last.size() + 4 < start + end)
            fail("Next changed more than the last character of the name");
        if (wasUtf8 && !validUtf8(caption)) fail("Next broke the text's UTF-8");
    }
    return 0;
}
