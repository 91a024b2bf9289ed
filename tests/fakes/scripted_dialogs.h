#pragma once
// Dialogs answered from a script. Every box shown is recorded; a question, input box or
// file dialog that the script did not expect fails the test, and so does an answer the
// script held that no dialog took by the end of the test.
#include "platform/dialogs.h"
#include "platform/key_state.h"

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace kdx::test {

struct ShownBox {
    std::string prompt;
    int style = 0;
    std::string title;
};

class ScriptedDialogs : public Dialogs {
public:
    std::deque<Answer> answers;                   // for MsgBox with Yes/No
    std::deque<std::string> inputs;               // for InputBox
    std::deque<std::optional<std::string>> files; // for OpenFile / SaveFile
    std::vector<ShownBox> boxes;                  // every message box shown
    std::vector<ShownBox> prompts;                // every input box shown (prompt, 0, title)
    std::vector<std::string> inputDefaults;
    std::vector<FileDialogRequest> fileRequests;
    bool failOnUnexpected = true;
    // Runs while a message box is open, as the box's own event loop runs the program then.
    std::function<void(const ShownBox&)> whileOpen;

    ScriptedDialogs() = default;
    ScriptedDialogs(const ScriptedDialogs&) = delete;
    ScriptedDialogs& operator=(const ScriptedDialogs&) = delete;
    ~ScriptedDialogs() override
    {
        if (!failOnUnexpected) return;
        if (!answers.empty()) ADD_FAILURE() << answers.size() << " answer(s) to a question never asked";
        if (!inputs.empty()) ADD_FAILURE() << "input \"" << inputs.front() << "\" never asked for";
        if (!files.empty()) ADD_FAILURE() << files.size() << " file name(s) never asked for";
    }

    Answer MsgBox(const std::string& prompt, int style, const std::string& title) override
    {
        boxes.push_back({prompt, style, title});
        if (whileOpen) whileOpen(ShownBox(boxes.back()));
        if ((style & 7) == box::OkOnly) return Answer::Ok;
        if (answers.empty()) {
            if (failOnUnexpected) ADD_FAILURE() << "unexpected question: " << prompt;
            return Answer::No;
        }
        const Answer a = answers.front();
        answers.pop_front();
        return a;
    }
    std::string InputBox(const std::string& prompt, const std::string& title, const std::string& defaultText) override
    {
        prompts.push_back({prompt, 0, title});
        inputDefaults.push_back(defaultText);
        if (inputs.empty()) {
            if (failOnUnexpected) ADD_FAILURE() << "unexpected input box: " << prompt;
            return {};
        }
        std::string s = inputs.front();
        inputs.pop_front();
        return s;
    }
    std::optional<std::string> OpenFile(const FileDialogRequest& r) override { return nextFile(r); }
    std::optional<std::string> SaveFile(const FileDialogRequest& r) override { return nextFile(r); }

private:
    std::optional<std::string> nextFile(const FileDialogRequest& r)
    {
        fileRequests.push_back(r);
        if (files.empty()) {
            if (failOnUnexpected) ADD_FAILURE() << "unexpected file dialog: " << r.filter;
            return std::nullopt;
        }
        auto f = files.front();
        files.pop_front();
        return f;
    }
};

class FakeKeyState : public KeyState {
public:
    bool shift = false;
    bool shiftDown() const override { return shift; }
};

} // namespace kdx::test
