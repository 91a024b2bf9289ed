#pragma once
// The logging window's file naming: automatic numbering (Next) and the extension rule of
// Change. Both act on the file name only, never on the folders of the path; a folder
// ends at the last "/" or "\".
#include <string>
#include <string_view>

namespace kdx {

namespace logname {
constexpr std::string_view DefaultCaption = "C:\\Temp\\Run0.csv"; // before the first Next
constexpr std::string_view InitialLastNameChar = "0";
constexpr std::string_view DialogTitle = "Log File Select";
constexpr std::string_view DialogFileName = "D:\\Logs\\Run.Log";
constexpr std::string_view DialogFolder = "D:\\Logs";
constexpr std::string_view DefaultExtension = ".csv";
} // namespace logname

// Next: advances the character just before the first "." of the file name by one
// character code, except that "9" becomes "A" (so Run1..Run9, RunA, ...; "Z" becomes
// "[", no wrap-around). Non-ASCII characters advance by one code point, in UTF-8. A
// character that would become a folder separator advances once more, so the path keeps
// its folders. A byte that is not valid UTF-8 is left as it is.
//
// A dot that starts the file name (".log") is part of the name, not an extension mark.
// A file name without an extension mark has its last character advanced ("Run" ->
// "Ruo"), so a new log never lands on the previous one's name.
//
// Returns false and changes nothing when the path has no file name at all (it ends in
// a separator or is empty). Otherwise `caption` is updated and `lastNameChar` receives
// the new character (the window's LastNameChar).
bool NextLogFileName(std::string& caption, std::string& lastNameChar);

// Change: the caption for a file chosen in the dialog: the name as chosen, with ".csv"
// appended when its file name has no extension mark.
std::string ChangedLogFileName(std::string_view chosen);

} // namespace kdx
