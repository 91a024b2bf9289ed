#include "platform/device_group.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using namespace kdx;

// The join-the-group hint is given only to a user outside the device's group: telling a
// member to join again would send them looking in the wrong place.
TEST(DeviceGroup, NamesTheOwningGroupOnlyWhenTheUserIsNotInIt)
{
    char path[] = "/tmp/kdx-device-XXXXXX";
    const int fd = ::mkstemp(path);
    ASSERT_GE(fd, 0);
    ::close(fd);
    struct stat st {};
    ASSERT_EQ(::stat(path, &st), 0);
    const gid_t owner = st.st_gid, other = owner + 4242;
    struct Case {
        const char* name;
        gid_t primary;
        std::vector<gid_t> groups;
        bool joined;
    };
    const Case cases[] = {
        {"primary group owns it", owner, {}, true},
        {"a supplementary group owns it", other, {other + 1, owner}, true},
        {"in neither", other, {other + 1}, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string group = deviceGroupNotJoined(path, c.primary, c.groups);
        EXPECT_EQ(group.empty(), c.joined) << group;
    }
    EXPECT_EQ(deviceGroupNotJoined("/nonexistent/ttyUSB9", other, {}), "") << "nothing to examine, nothing to say";
    std::remove(path);
}
