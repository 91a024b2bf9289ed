#pragma once
// Remembers what a control shows so the window touches it only when the value changes.
#include <optional>
#include <utility>

namespace kdx {

template <typename T>
class ChangedOnly {
public:
    // True when `value` differs from the value last accepted, or when nothing has been
    // accepted yet (so the first refresh always paints); the value is then remembered.
    // False, and nothing remembered, when it is the same.
    bool changed(const T& value)
    {
        if (last_ && *last_ == value) return false;
        last_ = value;
        return true;
    }

    // Forgets the remembered value: the next call to changed() returns true.
    void reset() { last_.reset(); }

    const std::optional<T>& last() const { return last_; }

private:
    std::optional<T> last_;
};

} // namespace kdx
