#include "link/port_return.h"

#include <algorithm>

namespace kdx {

namespace {

bool sameIds(const PortIdentity& a, const PortIdentity& b)
{
    return !a.hasUsbIds() || !b.hasUsbIds() || (a.vendorId == b.vendorId && a.productId == b.productId);
}

// Whether `now`, found where `lost` was, can be the same adapter. A port the system
// says nothing of (a symbolic link, a pseudo-terminal) is taken on trust.
bool couldBe(const PortIdentity& lost, const PortIdentity& now)
{
    if (!now.recognisable()) return true;
    if (!sameIds(lost, now)) return false;
    return lost.serialNumber.empty() || now.serialNumber.empty() || lost.serialNumber == now.serialNumber;
}

} // namespace

std::optional<std::string> returnedPath(const PortIdentity& lost, const std::vector<PortIdentity>& listed,
                                        bool pathPresent)
{
    if (pathPresent) {
        const auto there =
            std::find_if(listed.begin(), listed.end(), [&](const PortIdentity& p) { return p.path == lost.path; });
        if (!lost.recognisable() || there == listed.end() || couldBe(lost, *there)) return lost.path;
    }
    if (!lost.recognisable()) return std::nullopt;
    if (!lost.serialNumber.empty()) {
        for (const PortIdentity& p : listed)
            if (p.serialNumber == lost.serialNumber && sameIds(lost, p)) return p.path;
        return std::nullopt;
    }
    std::optional<std::string> found;
    for (const PortIdentity& p : listed) {
        if (!p.hasUsbIds() || p.vendorId != lost.vendorId || p.productId != lost.productId) continue;
        if (found) return std::nullopt; // two alike
        found = p.path;
    }
    return found;
}

} // namespace kdx
