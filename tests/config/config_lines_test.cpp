#include "config/config_lines.h"

#include "base/lists.h"
#include "support/temp_dir.h"

using ConfigLinesTest = TempDirTest;
using namespace std::string_literals;

// The slots that are not absent, one line each: keyword, state, value.
static std::string readSlots(std::string_view text) {
    writeFile("Xconfig", text);
    std::string shown;
    ConfigLine *line = readConfigLines("Xconfig");
    EXPECT_EQ(listCount(line), 71);
    for (; line; line = line->next)
        if (line->state != LineState::Absent)
            shown += std::string(line->keyword) +
                     (line->state == LineState::Active ? " active " : " commented ") +
                     (line->value ? "[" + *line->value + "]" : "-") + "\n";
    return shown;
}

TEST_F(ConfigLinesTest, SlotsFillInTableOrderAndOtherLinesAreDropped) {
    EXPECT_EQ(readSlots("# Some free text\n"
                        "Option a\n"
                        "Unknown x\n\n"
                        "   \n"
                        "Mouse Microsoft /dev/ttyS0 \n"
                        "Mouse PS/2\n"
                        "Mouse third is dropped\n"
                        "LogFile /tmp/log\n"
                        "mouse case counts\n"
                        "Option b  c\n"
                        "Driver\n"
                        "Video last\n"
                        "Driver x\n"
                        "Nice 3\n"),
              "LogFile active [/tmp/log]\n"
              "Mouse active [Microsoft /dev/ttyS0 ]\n"
              "Mouse active [PS/2]\n"
              "Option active [a]\n"
              "Option active [b  c]\n"
              "Video active [last]\n");
    std::string options;
    for (int n = 0; n < 21; n++)
        options += "Option " + std::to_string(n) + "\n";
    EXPECT_TRUE(readSlots(options).ends_with("Option active [19]\n"));
}

TEST_F(ConfigLinesTest, CommentsAndValuesFollowTheLengthOfTheLine) {
    EXPECT_EQ(readSlots("# LogFile /tmp/x\n"), "LogFile commented [/tmp/x]\n");
    EXPECT_EQ(readSlots("#LogFile /tmp/x\n"), "LogFile commented [/tmp/x]\n");
    EXPECT_EQ(readSlots("#  LogFile /tmp/x\n"), "LogFile commented [LogFile /tmp/x]\n");
    EXPECT_EQ(readSlots("# LogFile x"), "LogFile commented -\n"); // too short by one
    EXPECT_EQ(readSlots("LogFile x"), "LogFile active -\n");
    EXPECT_EQ(readSlots("LogFile x\n"), "LogFile active [x]\n");
    EXPECT_EQ(readSlots("LogFile\t/tmp/x\n"), "LogFile active [/tmp/x]\n");
    EXPECT_EQ(readSlots("LogFile\t\t\t\n"), "LogFile active []\n");
    EXPECT_EQ(readSlots("LogFile ab\0cd\n"s), "LogFile active [ab]\n");
    // A slot without a value takes the next line of its keyword.
    EXPECT_EQ(readSlots("Option\n# Option b\nOption c\n"),
              "Option commented [b]\nOption active [c]\n");
    EXPECT_EQ(readSlots("LogFile " + std::string(1015, 'a') + "Nice 5\n"),
              "LogFile active [" + std::string(1015, 'a') + "]\nNice active [5]\n");
}
