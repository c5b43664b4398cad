#include "config/screen_config.h"

#include "support/temp_dir.h"

using ScreenConfigTest = TempDirTest;

// What is read of a section of the sample, a line per mode; empty without the section.
static std::string shownSection(int index) {
    const auto screen = parseScreenSection(samplePath("Xconfig.sections"), index);
    if (!screen)
        return "";
    std::string shown = "[" + std::string(screen->card ? screen->card->name : "-") + "]";
    for (const int value : {screen->virtualWidth, screen->virtualHeight, screen->depth})
        shown += " " + std::to_string(value);
    for (const int position : screen->selection)
        shown += ", " + std::to_string(position);
    for (const VideoMode *mode = screen->modes.get(); mode; mode = mode->next)
        shown += "\n" + mode->label + "|" + std::to_string(mode->depth) + " " +
                 std::to_string(mode->hDisplay) + " " + std::to_string(mode->vDisplay);
    return shown;
}

TEST_F(ScreenConfigTest, ASectionIsReadUpToItsModeDatabase) {
    EXPECT_EQ(shownSection(0), "[ Acme One ] 1024 768 8, 1, 2\n"
                               "\"640x480\" 25 640 656|8 640 480\n"
                               "\"800x 600-tall\"|8 800 600");
    EXPECT_EQ(shownSection(1), "[-] 0 0 0, 1\n\"-8x+9|0 -8 9"); // no card behind "Modes"
    EXPECT_EQ(shownSection(2), "[-] 0 0 0");
    EXPECT_EQ(shownSection(3), "");
}

TEST_F(ScreenConfigTest, ModesBeyondTheLimitAreReportedOnce) {
    const std::string message = "Screen section 0 of Xconfig: only the first 99 modes are shown\n";
    std::string text = "Driver a\nVirtual 5" + std::string(1013, ' ') + "67\nModes\n";
    for (int n = 1; n <= 101; n++) {
        text += "\"640x480\"\n";
        writeFile("Xconfig", text);
        const auto screen = parseScreenSection("Xconfig", 0);
        ASSERT_TRUE(screen);
        EXPECT_EQ(std::ssize(screen->selection), std::min(n, 99));
        EXPECT_EQ(screen->virtualHeight, 6); // the line's byte 1023
        EXPECT_EQ(messages(), n > 99 ? message : "") << n;
    }
}
