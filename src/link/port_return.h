#pragma once
// Recognising a lost port when it comes back.
#include "platform/serial_port.h"

#include <optional>
#include <string>
#include <vector>

namespace kdx {

// Where the lost port `lost` is now, if it is back. `pathPresent`: a device is at the
// lost path again; `listed`: the ports the system lists now (only read for an adapter
// that can be recognised).
// - At its own path, unless the system says a different adapter sits there.
// - An adapter with a serial number: at whatever path the system lists that number
//   (with the same vendor and product ids when both are known).
// - An adapter without one: at the one path listed with its vendor and product ids;
//   two alike are ambiguous and neither is taken.
std::optional<std::string> returnedPath(const PortIdentity& lost, const std::vector<PortIdentity>& listed,
                                        bool pathPresent);

} // namespace kdx
