#pragma once
#include <stdexcept>
#include <string>

namespace kdx {

// The three faults the host platform raised at run time. Each abandons the event
// handler it happens in and nothing else (see platform/qt_guard.h).
enum class HostErrorKind { Overflow, Subscript, DivisionByZero };

class HostError : public std::runtime_error {
public:
    explicit HostError(HostErrorKind kind);
    HostErrorKind kind() const { return kind_; }

private:
    HostErrorKind kind_;
};

[[noreturn]] void raiseOverflow();
[[noreturn]] void raiseSubscript();
[[noreturn]] void raiseDivisionByZero();

// The host's own description of an error, as shown after "...: " in message boxes.
std::string describe(HostErrorKind kind);

} // namespace kdx
