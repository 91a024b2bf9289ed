#pragma once
// Message boxes, the single-line input box and the file dialogs. The Qt implementation
// shows real dialogs; tests answer from a script.
#include <optional>
#include <string>

namespace kdx {

// Box styles as the system writes them.
namespace box {
constexpr int OkOnly = 0;
constexpr int YesNo = 4;
constexpr int Critical = 16;
constexpr int Exclamation = 48;
constexpr int YesNoWarning = 52; // YesNo + Exclamation
} // namespace box

enum class Answer { Ok, Yes, No, Cancel };

struct FileDialogRequest {
    std::string title;
    std::string filter;     // the system's "Text|*.ext|Text|*.*" form
    int filterIndex = 1;    // 1-based, as the system counts
    std::string defaultExt; // without the dot
    std::string fileName;   // initial file name (may include a folder)
    std::string initialDir;
};

class Dialogs {
public:
    virtual ~Dialogs() = default;
    virtual Answer MsgBox(const std::string& prompt, int style, const std::string& title) = 0;
    // Returns the text typed; Cancel returns the empty text, as the system's box does.
    virtual std::string InputBox(const std::string& prompt, const std::string& title,
                                 const std::string& defaultText) = 0;
    // The chosen path, or nothing when the user cancels.
    virtual std::optional<std::string> OpenFile(const FileDialogRequest& request) = 0;
    virtual std::optional<std::string> SaveFile(const FileDialogRequest& request) = 0;
};

} // namespace kdx
