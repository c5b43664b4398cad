#include "hwdb/display_entry.h"

#include "base/lists.h"
#include "support/temp_dir.h"
#include "vdif/monitor_description.h"
#include "vdif/vdif_reader.h"

struct DisplayEntryTest : TempDirTest {
    void SetUp() override {
        defaultDescription = nullptr;
        loadMonitorDescriptions(samplePath("one-timing.vda").c_str(), nullptr);
    }
    // The modes of an entry with this text.
    ModeList read(std::string_view text) {
        writeFile(displayConfigPath("fast"), text);
        return readDisplayEntry(card);
    }
    CardEntry card = {nullptr, "Acme", "fast", {}, 0};
};

// Everything that is read of a mode, on one line.
static std::string shownMode(const VideoMode &mode) {
    std::string shown = mode.label + "|" + mode.name + "|" + std::to_string(mode.depth) + " " +
                        std::to_string(mode.refresh) + " " + std::to_string(mode.clock) + "|";
    for (const int value : {mode.hDisplay, mode.hSyncStart, mode.hSyncEnd, mode.hTotal,
                            mode.vDisplay, mode.vSyncStart, mode.vSyncEnd, mode.vTotal})
        shown += std::to_string(value) + " ";
    shown += "|" + mode.timingRef.value_or("-") + "|" + std::to_string(mode.flags);
    return shown;
}

TEST_F(DisplayEntryTest, TheThreeFormsOfAModeLine) {
    const ModeList modes = read(sampleFile("DisplayConfig"));
    EXPECT_EQ(card.flags, 0u);
    std::string shown;
    for (const VideoMode *mode = modes.get(); mode; mode = mode->next)
        shown += shownMode(*mode) + "\n";
    EXPECT_EQ(shown,
              " 640 x  480,      256 colors at 60 Hz|640x480|8 60 25.000000|"
              "640 656 752 800 480 490 492 525 |-|0\n"
              "1024 x  768, 16777216 colors Non Interlaced Interlaced|1024x768|32 -3 65.000000|"
              "1 2 3 4 5 6 7 8 |-|18\n"
              " 640 x  480,      256 colors at 60 Hz|640x480:fast/vga60|8 60 25.000000|"
              "640 0 0 0 480 0 0 0 |vga60|0\n"
              "1600 x 1200,    32768 colors at  0 Hz|"
              "1600x1200:fast/a234567890123456789012345678901|15 0 200.000000|"
              "1600 0 0 0 1200 0 0 0 |a234567890123456789012345678901|4\n"
              " 640 x  480,    65536 colors (Refresh Rate from DOS Install) Interlaced|640x480|"
              "16 -1 25.174999|640 656 752 800 480 490 492 525 |-|26\n"
              "   1 x    2,        0 colors |1x2:fast/6|40 -9 5.000000|1 0 0 0 2 0 0 0 |6|7\n");
    EXPECT_EQ(messages(), "");
}

TEST_F(DisplayEntryTest, ExtraLinesGoToTheModeBeforeThemIfItWasMade) {
    const ModeList modes = read("NoVirtual\nModes\n: to the first\n"
                                "8 8 8 8 \"unknown\"\n: dropped with it\n"
                                "8 8 8 8 8 first\n: also to the first\n"
                                "8 8 8 8 \"unterminated\n: dropped too\n"
                                "8 8 8 8 8 second\n"
                                "8 8 8 8 8 third\n: last");
    EXPECT_EQ(card.flags, CARD_NO_VIRTUAL);
    ASSERT_EQ(listCount(modes.get()), 3);
    EXPECT_EQ(modes->extraLines, "to the first\nalso to the first\n");
    EXPECT_EQ(modes->next->extraLines, "");
    EXPECT_EQ(modes->next->next->extraLines, "last\n");
    EXPECT_EQ(messages(), "Unterminated timing name in " + displayConfigPath("fast") +
                              ": 8 8 8 8 \"unterminated\n");
}

TEST_F(DisplayEntryTest, LinesAndTextsEndAtTheirLimits) {
    ModeList modes = read("Modes\n8 8 8 8 8" + std::string(1012, ' ') + "wx y\n");
    EXPECT_EQ(modes->timingRef, "w"); // the line's byte 1022
    const std::string longest(127, 't');
    std::string library = sampleFile("one-timing.vda");
    writeFile("library", library.replace(library.find("my timing"), 9, longest));
    defaultDescription = nullptr;
    loadMonitorDescriptions("library", nullptr);
    EXPECT_EQ(listCount(read("Modes\n8 8 8 8 \"" + longest + "\"\n8 8 8 8 \"" + longest +
                             "x\"\n8 8 8 8 \"" + longest.substr(1) + "\"\n")
                            .get()),
              2);
    const std::string cardClass(250, 'c');
    card.cardClass = cardClass;
    writeFile(displayConfigPath(cardClass), "Modes\n8 8 8 8 8 w\n8 8 8 8 8 wx\n");
    modes = readDisplayEntry(card);
    EXPECT_EQ(modes->name, "8x8:" + cardClass + "/");
    EXPECT_EQ(modes->next->name, modes->name);
}

TEST_F(DisplayEntryTest, ANumberThatBeginsNoModeIsFatal) {
    for (const std::string line : {"640 480 8 60\n", "8 8 8 8 \"\n", "8 8 8 8 8\n", "1 x"})
        EXPECT_EXIT(read("Modes\n" + line), testing::ExitedWithCode(1),
                    "^\nFatal error:\nInternal error, file " + line + "\n\n$");
}
