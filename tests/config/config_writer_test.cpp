#include "config/config_writer.h"

#include <filesystem>

#include "config/config_file.h"
#include "config/config_lines.h"
#include "config/dropped_lines.h"
#include "config/pointer_line.h"
#include "support/temp_dir.h"

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
    *currentPointer = {nullptr, "", "Elo", 0, {}};
    std::string lines;
    writeGlobalLines(lines);
    EXPECT_EQ(lines, "# LogFile /tmp/log\nMouse Elo\nOption \n\n\n\n");
}

TEST_F(ConfigWriterTest, AFaultLeavesTheOldFile) {
    const std::string old = readFile(configPath);
    configureScreen(screens[1]);
    fs::remove("usr/lib/X11/Korvel/DisplayConfig/fast/config");
    EXPECT_EXIT(writeConfig(), testing::ExitedWithCode(1),
                "Can't open DisplayConfig entry usr/lib/X11/Korvel/DisplayConfig/fast/config\n");
    EXPECT_EQ(readFile(configPath), old);
    configPath = "missing/Xconfig";
    EXPECT_EXIT(openConfigFile(), testing::ExitedWithCode(1),
                "Cannot open the folder of missing/Xconfig: No such file or directory\n");
}

TEST_F(ConfigWriterTest, LinesAreComparedByTheirWords) {
    const std::tuple<const char *, const char *, int> cases[] = {
        {"LogFile\t/x  y \n\n#  Nice 3\n \t\n", "# Nice 3\nLogFile /x y\n", 0},
        {"a\na\nb", "a\nb b\n", 2},
        {"#Nice", "Nice\n", 1},
        {"", "a\n", 0}};
    for (const auto &[oldText, newText, dropped] : cases)
        EXPECT_EQ(countDroppedLines(oldText, newText), dropped) << oldText;
}

// What the choices of a run replace is not dropped.
TEST_F(ConfigWriterTest, EveryLineThatASaveDropsIsCountedAndTheOldFileKept) {
    constexpr bool UNCHANGED = false, CHOICES = true;
    const std::string section = "Driver fast x\nCard One\nVirtual 1 1\nDepth 8\nBitsPerPixel 9\n"
                                "Modes\n\"1x1\" 25\n";
    const std::tuple<bool, std::string, int> cases[] = {
        {UNCHANGED, "LogFile /x\nDriver a\n# kept\n", 0},
        {UNCHANGED, "# free\nUnknown x\n", 2},
        {UNCHANGED, "LogFile a\nLogFile b\n", 1},
        {UNCHANGED, "#LogFile a comment\nLogFile a\n", 1},
        {UNCHANGED, "Option\ta b c\n", 1},
        {UNCHANGED, "Mouse Old\nButtons 9\n", 1},
        {UNCHANGED, "Driver a\nDriverPath x\nDriver b\n", 1},
        {CHOICES, "Mouse Old\n Buttons 9\n" + section, 0},
        {CHOICES, section + "ModeDB\n\"2x2\"\nnote\n", 3},
        {CHOICES, section + "\"no mode\nDriver two\nDepth 4\n", 1},
        {CHOICES, "Depth 4\n\"1x1\"\n# Mouse Old\n" + section, 3}};
    PointerDevice chosen{nullptr, "", "Microsoft", 3, "/dev/ttyS0"};
    for (const auto &[choices, text, dropped] : cases) {
        SCOPED_TRACE(text);
        read(text);
        if (choices) {
            configureScreen(screens[0]);
            choosePointer(chosen);
        } else {
            EXPECT_EQ(countUnchangedDrops(), dropped);
        }
        const SaveReport report = writeConfig();
        EXPECT_EQ(report.result, SaveResult::Saved);
        EXPECT_EQ(report.dropped, dropped);
        EXPECT_EQ(readFile("etc/X11/Xconfig.~1~"), dropped ? text : "");
        EXPECT_EQ(std::distance(fs::directory_iterator("etc/X11"), {}), dropped ? 2 : 1);
    }
}
