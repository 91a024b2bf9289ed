#pragma once
// Why a serial device refused to open for lack of permission: on Linux, the usual cause
// is that the user is not in the group that owns the device (dialout on most systems).
#include <span>
#include <string>
#include <sys/types.h>

namespace kdx {

// The name of the group that owns the device at `path` (its number when it has no name)
// when a user with primary group `primary` and supplementary `groups` is not in it; empty
// when the user is in it or the device cannot be examined.
std::string deviceGroupNotJoined(const std::string& path, gid_t primary, std::span<const gid_t> groups);
// The same for the user running the program.
std::string deviceGroupNotJoined(const std::string& path);

// What a refused open adds after its reason: how to join the group that owns the device,
// when the user is not in it (Linux only); otherwise nothing.
std::string permissionHint(const std::string& path);

} // namespace kdx
