#include "config/config_file.h"

#include <cstdlib>

#include "support/temp_dir.h"

using ConfigFileTest = TempDirTest;

TEST_F(ConfigFileTest, TheUsersFileComesBeforeTheSystems) {
    const auto located = [](const std::string &home) {
        setenv("HOME", home.c_str(), 1);
        return locateConfigFile().value_or("none");
    };
    EXPECT_EQ(located("home/"), "none");
    writeFile("etc/X11/Xconfig", "");
    EXPECT_EQ(located("home/"), "etc/X11/Xconfig");
    writeFile("home/.Xconfig", "");
    EXPECT_EQ(located("home/"), "home/.Xconfig");
    const std::string longest = std::string(242, '/') + "home"; // 255 bytes with "/.Xconfig"
    EXPECT_EQ(located("." + longest.substr(1)), "." + longest.substr(1) + "/.Xconfig");
    EXPECT_EQ(located("." + longest), "etc/X11/Xconfig");
    unsetenv("HOME");
    EXPECT_EQ(locateConfigFile(), "etc/X11/Xconfig");
}

TEST_F(ConfigFileTest, OnlyTheFileThatWasFoundIsOpened) {
    writeFile("found", "");
    writeFile("secret", "");
    std::filesystem::create_symlink("found", "Xconfig");
    configPath = "Xconfig";
    openConfigFile();
    EXPECT_TRUE(openForReading(configPlace()));
    std::filesystem::remove("Xconfig");
    std::filesystem::create_symlink("secret", "Xconfig");
    EXPECT_FALSE(openForReading(configPlace()));
    EXPECT_TRUE(configChanged() && configIsLink());
}
