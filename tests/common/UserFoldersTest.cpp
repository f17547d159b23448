#include "common/UserFolders.h"

#include <cstdlib>
#include <gtest/gtest.h>

using drench::userFolder;

TEST(UserFolders, LieWhereTheEnvironmentSays) {
    setenv("HOME", "/home/ann", 1);
    unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(userFolder("XDG_CONFIG_HOME", ".config"), "/home/ann/.config/drench");
    setenv("XDG_CONFIG_HOME", "/etc/ann", 1);
    EXPECT_EQ(userFolder("XDG_CONFIG_HOME", ".config"), "/etc/ann/drench");
}

TEST(UserFolders, RelativePathsInTheEnvironmentCountAsNone) {
    setenv("HOME", "/home/ann", 1);
    setenv("XDG_CONFIG_HOME", "relative", 1);
    EXPECT_EQ(userFolder("XDG_CONFIG_HOME", ".config"), "/home/ann/.config/drench");
    setenv("HOME", "home/ann", 1);
    EXPECT_EQ(userFolder("XDG_CONFIG_HOME", ".config"), "");
    unsetenv("HOME");
    EXPECT_EQ(userFolder("XDG_CONFIG_HOME", ".config"), "");
}
