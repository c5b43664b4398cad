#include "config/config_writer.h"

#include <filesystem>

#include "config/config_lines.h"
#include "hwdb/pointer_devices.h"
#include "support/temp_dir.h"

namespace fs = std::filesystem;
using namespace std::string_literals;

// A screen's section that holds what a careless copy would lose.
static const std::string KEPT_SECTION =
    "Driver two \n\n# comment\n Driver\nCard A\0B\nModes\n\"640x480\" 25\nModeDB\n  kept\n\n"s +
    std::string(3000, 'x') + "\nno line end";

struct ConfigWriterTest : TempDirTest {
    void SetUp() override {
        configPath = "etc/X11/Xconfig";
        templateUsed = 0;
        currentPointer = nullptr;
        writeFile(configPath, "# LogFile /tmp/log\nMouse Old /dev/old\nButtons 9\nOption \n"
                              "free text\nDriver one\nModes\n" +
                                  KEPT_SECTION);
        configState = fileState(configPath);
        configLines = readConfigLines(configPath);
        for (screenCount = 0; parseScreenSection(configPath, screenCount, screens[screenCount]);)
            screenCount++;
    }
};

// Makes the screen one that was configured in this run: three modes of a class.
static void configureScreen(ScreenConfig &screen) {
    writeFile("usr/lib/X11/Korvel/DisplayConfig/fast/config",
              "# made for fast\nDriver fast x\nChipset f1\nModes\n"
              "640 480 24 60 25 640 656 752 800 480 490 492 525 19\n"
              "800 600 24 60 40 w\n: ModeLine 1\n: ModeLine 2\n"
              "1024 768 24 60 65 0 0 0 0 0 0 0 0 255\n: not written\n");
    auto *card = new CardEntry{nullptr, "Acme: One", "fast", "CardLine 1\n\n", 0};
    screen = {card, 0, readDisplayEntry(*card), {2, 1, 3}, 1600, 1200, 24};
    screen.modes->clock = 25.175F;
}

TEST_F(ConfigWriterTest, AChangedSectionIsMadeFromTheDisplayEntryAndTheOtherKept) {
    configureScreen(screens[0]);
    appendPlaceholderScreen(); // has no section and writes none
    currentPointer = new PointerDevice{nullptr, "", "Microsoft", 3, "/dev/ttyS0"};
    writeConfig();
    EXPECT_EQ(readFile(configPath), "# LogFile /tmp/log\nMouse Microsoft /dev/ttyS0\nButtons 3\n"
                                    "Option \n\n\n\n"
                                    "# made for fast\n"
                                    "\n\nDriver fast x\nCard Acme: One\nChipset f1\n"
                                    "CardLine 1\n\nModeLine 1\nModeLine 2\n"
                                    "Virtual 1600 1200\nDepth 24\n\nBitsPerPixel 24\n\nModes \n"
                                    "\"800x600:fast/w\" 40.0 0 0 0 0 0 0 0 0 \n"
                                    "\"640x480\" 25.2 640 656 752 800 480 490 492 525 "
                                    "Interlace NHsync PHsync \n"
                                    "\"1024x768\" 65.0 0 0 0 0 0 0 0 0 Interlace NHsync PHsync "
                                    "NVsync PVsync DoubleScan CompositeSync SyncOnGreen \n"
                                    "\n\n" +
                                        KEPT_SECTION);
    *currentPointer = {nullptr, "", "Elo", 0, {}};
    EXPECT_EQ(textOf(writeGlobalLines), "# LogFile /tmp/log\nMouse Elo\nOption \n\n\n\n");
}

TEST_F(ConfigWriterTest, AFaultLeavesTheOldFile) {
    const std::string old = readFile(configPath);
    configureScreen(screens[1]);
    fs::remove("usr/lib/X11/Korvel/DisplayConfig/fast/config");
    EXPECT_EXIT(writeConfig(), testing::ExitedWithCode(1),
                "Can't open DisplayConfig entry usr/lib/X11/Korvel/DisplayConfig/fast/config\n");
    EXPECT_EQ(readFile(configPath), old);
    configPath = "missing/Xconfig";
    configState.reset();
    EXPECT_EXIT(writeConfig(), testing::ExitedWithCode(1), "failed to open file missing/Xconfig\n");
}
