// The picture in README.md is the main screen that the program really shows.
#include <cstdlib>
#include <regex>

#include "support/terminal.h"

using ReadmeTest = TerminalTest;

// tools/update-readme asks for the picture through SCRCONF_PICTURE, the file to write it to.
TEST_F(ReadmeTest, ShowsTheMainScreen) {
    writeFile(config, readFile(SCRCONF_SOURCE_DIR "/data/sample/Xconfig"));
    start();
    press("<Enter>");
    const std::string picture = std::regex_replace(screen(), std::regex("\\{b?r?:|\\}"), "");
    if (const char *path = std::getenv("SCRCONF_PICTURE"))
        writeFile(path, picture);
    else
        EXPECT_NE(readFile(SCRCONF_SOURCE_DIR "/README.md").find("```\n" + picture + "```\n"),
                  std::string::npos)
            << "tools/update-readme puts this into README.md:\n"
            << picture;
}
