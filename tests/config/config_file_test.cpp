#include "config/config_file.h"

#include <cstdlib>

#include "support/temp_dir.h"

using ConfigFileTest = TempDirTest;

TEST_F(ConfigFileTest, TheUsersFileComesBeforeTheSystems) {
    setenv("HOME", "home/", 1);
    EXPECT_EQ(locateConfigFile(), std::nullopt);
    writeFile("etc/X11/Xconfig", "");
    EXPECT_EQ(locateConfigFile(), "etc/X11/Xconfig");
    writeFile("home/.Xconfig", "");
    EXPECT_EQ(locateConfigFile(), "home/.Xconfig");
    setenv("HOME", "home", 1);
    EXPECT_EQ(locateConfigFile(), "home/.Xconfig");
    std::string home = "home";
    while (home.size() + std::string("/.Xconfig").size() <= 255)
        home.insert(0, "./");
    setenv("HOME", home.c_str(), 1);
    EXPECT_EQ(locateConfigFile(), "etc/X11/Xconfig");
    unsetenv("HOME");
    EXPECT_EQ(locateConfigFile(), "etc/X11/Xconfig");
}
