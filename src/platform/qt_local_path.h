#pragma once
// The program's default folders are written as the system writes them (C:\Temp,
// D:\Logs). On Windows they are used as they are; elsewhere C:\Temp becomes the temp
// folder and D:\Logs becomes ~/Logs, and the rest of the path takes forward slashes.
#include <string>
#include <string_view>

namespace kdx {

// `path` with a leading default folder mapped to this machine's; any other path as it is.
std::string localPath(std::string_view path);

} // namespace kdx
