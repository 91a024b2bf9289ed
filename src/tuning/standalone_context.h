#pragma once
// What the tuning model asks of the rest of the program, answered without it: a fixed
// set of gains for both motors (writes ignored), one answer to every question and no
// text to any prompt or file dialog, and a Shift key never held. For the harnesses that
// run the model alone: the benchmarks and the fuzz target.
#include "platform/dialogs.h"
#include "platform/key_state.h"
#include "tuning/gain_set.h"
#include "tuning/gain_store.h"

namespace kdx {

class FixedGainStore : public GainStore {
public:
    FixedGainStore(const GainSet& gains, bool loaded) : g_(gains), loaded_(loaded) {}
    float GetP(int) const override { return g_.P; }
    float GetI(int) const override { return g_.I; }
    float GetIA(int) const override { return g_.IA; }
    float GetD(int) const override { return g_.D; }
    float GetV1(int) const override { return g_.V1; }
    float GetV2(int) const override { return g_.V2; }
    float GetG(int) const override { return g_.G; }
    void PutP(float, int) override {}
    void PutI(float, int) override {}
    void PutIA(float, int) override {}
    void PutD(float, int) override {}
    void PutV1(float, int) override {}
    void PutV2(float, int) override {}
    void PutG(float, int) override {}
    bool GetGainsHaveBeenLoaded() const override { return loaded_; }
    bool GetDataModified() const override { return false; }

private:
    GainSet g_;
    bool loaded_;
};

class FixedAnswerDialogs : public Dialogs {
public:
    explicit FixedAnswerDialogs(Answer answer) : answer_(answer) {}
    Answer MsgBox(const std::string&, int, const std::string&) override { return answer_; }
    std::string InputBox(const std::string&, const std::string&, const std::string&) override { return {}; }
    std::optional<std::string> OpenFile(const FileDialogRequest&) override { return std::nullopt; }
    std::optional<std::string> SaveFile(const FileDialogRequest&) override { return std::nullopt; }

private:
    Answer answer_;
};

class NoShiftKey : public KeyState {
public:
    bool shiftDown() const override { return false; }
};

} // namespace kdx
