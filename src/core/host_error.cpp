#include "core/host_error.h"

namespace kdx {

HostError::HostError(HostErrorKind kind) : std::runtime_error(describe(kind)), kind_(kind) {}

void raiseOverflow() { throw HostError(HostErrorKind::Overflow); }
void raiseSubscript() { throw HostError(HostErrorKind::Subscript); }
void raiseDivisionByZero() { throw HostError(HostErrorKind::DivisionByZero); }

std::string describe(HostErrorKind kind)
{
    switch (kind) {
    case HostErrorKind::Overflow: return "Overflow";
    case HostErrorKind::Subscript: return "Subscript out of range";
    case HostErrorKind::DivisionByZero: return "Division by zero";
    }
    return "Unknown error";
}

} // namespace kdx
