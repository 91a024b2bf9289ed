#pragma once
// Message boxes, input box and file dialogs on Qt, mapping the system's box styles.
#include "platform/dialogs.h"

class QWidget;

namespace kdx {

class QtDialogs : public Dialogs {
public:
    explicit QtDialogs(QWidget* parent = nullptr) : parent_(parent) {}
    void setParent(QWidget* parent) { parent_ = parent; }

    Answer MsgBox(const std::string& prompt, int style, const std::string& title) override;
    std::string InputBox(const std::string& prompt, const std::string& title, const std::string& defaultText) override;
    std::optional<std::string> OpenFile(const FileDialogRequest& request) override;
    std::optional<std::string> SaveFile(const FileDialogRequest& request) override;

private:
    QWidget* parent_;
};

} // namespace kdx
