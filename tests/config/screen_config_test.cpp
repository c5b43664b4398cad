#include "config/screen_config.h"

#include "support/temp_dir.h"

using ScreenConfigTest = TempDirTest;

static const std::string THREE_SECTIONS = samplePath("Xconfig.sections");

TEST_F(ScreenConfigTest, OneSectionIsReadUpToItsModeDatabase) {
    ScreenConfig screen;
    ASSERT_TRUE(parseScreenSection(THREE_SECTIONS, 0, screen));
    EXPECT_EQ(screen.card->name, " Acme One ");
    EXPECT_EQ(screen.unchanged, 1);
    EXPECT_EQ(screen.virtualWidth, 1024);
    EXPECT_EQ(screen.virtualHeight, 768);
    EXPECT_EQ(screen.depth, 8);
    EXPECT_EQ(screen.selection, (std::vector{1, 2}));
    const VideoMode *second = screen.modes->next;
    EXPECT_EQ(screen.modes->label, "\"640x480\" 25 640 656");
    EXPECT_EQ(screen.modes->depth, 8);
    EXPECT_EQ(second->hDisplay, 800);
    EXPECT_EQ(second->vDisplay, 600);
    EXPECT_EQ(second->next, nullptr);
}

TEST_F(ScreenConfigTest, SectionsAreCountedFromTheirFirstLine) {
    ScreenConfig screen;
    ASSERT_TRUE(parseScreenSection(THREE_SECTIONS, 1, screen));
    EXPECT_EQ(screen.card, nullptr); // a card behind "Modes" is not seen
    EXPECT_EQ(screen.modes->hDisplay, -8);
    EXPECT_EQ(screen.modes->vDisplay, 9);
    EXPECT_TRUE(parseScreenSection(THREE_SECTIONS, 2, screen));
    EXPECT_EQ(screen.modes, nullptr);
    EXPECT_FALSE(parseScreenSection(THREE_SECTIONS, 3, screen));
    EXPECT_EXIT(parseScreenSection("missing", 0, screen), testing::ExitedWithCode(1),
                "^\nFatal error:\nfailed to open file missing\n\n$");
}

TEST_F(ScreenConfigTest, ModesBeyondTheLimitAreReportedOnce) {
    const std::string message = "Screen section 0 of Xconfig: only the first 99 modes are shown\n";
    std::string text = "Driver a\nVirtual 5" + std::string(1013, ' ') + "67\nModes\n";
    for (int n = 1; n <= 101; n++) {
        text += "\"640x480\"\n";
        writeFile("Xconfig", text);
        ScreenConfig screen;
        ASSERT_TRUE(parseScreenSection("Xconfig", 0, screen));
        EXPECT_EQ(std::ssize(screen.selection), std::min(n, 99));
        EXPECT_EQ(screen.virtualHeight, 6); // the line's byte 1023
        EXPECT_EQ(messages(), n > 99 ? message : "") << n;
    }
}
