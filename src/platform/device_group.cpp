#include "platform/device_group.h"

#include <algorithm>
#include <vector>

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kdx {

std::string deviceGroupNotJoined(const std::string& path, gid_t primary, std::span<const gid_t> groups)
{
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) return {};
    if (st.st_gid == primary || std::find(groups.begin(), groups.end(), st.st_gid) != groups.end()) return {};
    if (const group* g = ::getgrgid(st.st_gid)) return g->gr_name;
    return std::to_string(st.st_gid);
}

std::string deviceGroupNotJoined(const std::string& path)
{
    const int n = ::getgroups(0, nullptr);
    std::vector<gid_t> groups(static_cast<std::size_t>(std::max(n, 0)));
    if (n > 0 && ::getgroups(n, groups.data()) < 0) groups.clear();
    return deviceGroupNotJoined(path, ::getegid(), groups);
}

std::string permissionHint([[maybe_unused]] const std::string& path)
{
#ifdef __linux__
    const std::string group = deviceGroupNotJoined(path);
    if (!group.empty())
        return " (add your user to the " + group + " group: sudo usermod -aG " + group + " $USER, then log in again)";
#endif
    return {};
}

} // namespace kdx
