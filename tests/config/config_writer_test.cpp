#include "config/config_writer.h"

#include "config/config_file.h"
#include "config/config_lines.h"
#include "config/dropped_lines.h"
#include "config/pointer_line.h"
#include "support/cases.h"

namespace fs = std::filesystem;
using namespace std::string_literals;

// A screen's section that holds what a careless copy would lose.
static const std::string KEPT_SECTION =
    "Driver two \n\n# comment\n Driver\nCard A\0B\nModes\n\"640x480\" 25\nModeDB\n  kept\n\n"s +
    std::string(3000, 'x') + "\nno line end";

struct ConfigWriterTest : TempDirTest {
    void SetUp() override {
        read("# LogFile /tmp/log\nMouse Old /dev/old\nButtons 9\nOption \n"
             "free text\nDriver one\nModes\n" +
             KEPT_SECTION);
    }
    // Takes a text for the configuration, in a folder of its own each time.
    void read(std::string_view text) {
        fs::remove_all("etc");
        configPath = "etc/X11/Xconfig";
        pointerChosen = templateUsed = false;
        currentPointer = nullptr;
        writeFile(configPath, text);
        openConfigFile();
        configLines = readConfigLines(configPlace());
        for (screenCount = 0; auto screen = parseScreenSection(configPath, screenCount);)
            screens[screenCount++] = std::move(*screen);
    }
};

// Makes the screen one that was configured in this run: three modes of a class.
static void configureScreen(ScreenConfig &screen) {
    writeFile("usr/lib/X11/Korvel/DisplayConfig/fast/config", sampleFile("DisplayConfig.fast"));
    auto *card = new CardEntry{nullptr, "Acme: One", "fast", "CardLine 1\n\n", 0};
    screen = {card, false, readDisplayEntry(*card), {2, 1, 3}, 1600, 1200, 24};
    screen.modes->clock = 25.175F;
}

TEST_F(ConfigWriterTest, AChangedSectionIsMadeFromTheDisplayEntryAndTheOtherKept) {
    configureScreen(screens[0]);
    appendPlaceholderScreen(); // has no section and writes none
    currentPointer = new PointerDevice{nullptr, "", "Microsoft", 3, "/dev/ttyS0"};
    writeConfig();
    EXPECT_EQ(readFile(configPath), sampleFile("Xconfig.fast") + KEPT_SECTION);
}

// How many lines are lost from one text to another, or by a save with choices or without.
TEST_F(ConfigWriterTest, EveryLineThatASaveDropsIsCountedAndTheOldFileKept) {
    PointerDevice chosen{nullptr, "", "Microsoft", 3, "/dev/ttyS0"};
    expectCases("dropped-lines.cases", [&](const std::string &kind, const std::string &text) {
        const std::size_t bar = text.find('|');
        if (kind == "texts")
            return std::to_string(countDroppedLines(text.substr(0, bar), text.substr(bar + 1)));
        read(text);
        const int unchanged = countUnchangedDrops();
        if (kind == "choices") {
            configureScreen(screens[0]);
            choosePointer(chosen);
        }
        const SaveReport report = writeConfig();
        EXPECT_EQ(report.result, SaveResult::Saved);
        EXPECT_TRUE(kind == "choices" || report.dropped == unchanged);
        EXPECT_EQ(readFile("etc/X11/Xconfig.~1~"), report.dropped ? text : "");
        EXPECT_EQ(std::distance(fs::directory_iterator("etc/X11"), {}), report.dropped ? 2 : 1);
        return std::to_string(report.dropped);
    });
}
