// The examples of the manual pages, as they stand there, go through the readers that the pages are
// about; what the pages show as the result must come out.
#include "base/paths.h"
#include "config/config_lines.h"
#include "config/config_writer.h"
#include "config/pointer_line.h"
#include "frame/numbered_list.h"
#include "support/temp_dir.h"
#include "vdif/vdif_reader.h"

// The n-th example of a page, from 0, with the one escape that examples have taken back.
static std::string example(const std::string &page, int n) {
    std::string text = readFile(SCRCONF_SOURCE_DIR "/man/scrconf-" + page + ".5");
    for (; n >= 0; n--)
        text.erase(0, text.find("\n.EX\n") + 5);
    text.erase(text.find(".EE\n"));
    for (std::size_t minus; (minus = text.find("\\-")) != text.npos;)
        text.erase(minus, 1);
    return text;
}

// What an operation writes, without the blanks at line ends and the empty lines around it, which a
// page does not show.
template <typename Operation> static std::string written(Operation operation) {
    std::string text;
    operation(text);
    for (std::size_t blank; (blank = text.find(" \n")) != text.npos;)
        text.erase(blank, 1);
    text.erase(0, text.find_first_not_of('\n'));
    return text.erase(text.find_last_not_of('\n') + 2);
}

struct ManualExamplesTest : TempDirTest {
    void SetUp() override { // process-wide: each case starts empty
        cardList = nullptr;
        pointerDevices = nullptr;
        defaultDescription.reset();
        writeFile(CARD_LIST_PATH, example("CardInfo", 0));
        writeFile(displayConfigPath("a64"), example("DisplayConfig", 0));
        writeFile(POINTER_LIST_PATH, example("MouseInfo", 0));
        writeFile("monitor.vda", example("vdif", 0));
        writeFile("Xconfig", example("Xconfig", 0));
        configLines = readConfigLines("Xconfig");
        loadPointerDevices();
        setUpPointer();
        loadMonitorDescriptions(nullptr, "monitor.vda");
    }
    void TearDown() override { EXPECT_EQ(messages(), ""); } // no example is at fault
};

TEST_F(ManualExamplesTest, Xconfig) {
    EXPECT_EQ(written(writeGlobalLines), example("Xconfig", 1));
    const auto first = parseScreenSection("Xconfig", 0), second = parseScreenSection("Xconfig", 1);
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->card->name, "Acme Ranger 64");
    EXPECT_EQ(second->card->name, "Standard VGA");
    EXPECT_EQ(first->virtualHeight, 768);
    EXPECT_EQ(second->depth, 4);
    EXPECT_EQ(first->selection.size(), 2u);
    EXPECT_EQ(second->selection.size(), 1u);
}

TEST_F(ManualExamplesTest, PointerDevices) {
    static ConfigLine mouse{nullptr, "Mouse", std::nullopt, LineState::Active};
    configLines = &mouse;
    std::string shown;
    for (currentPointer = pointerDevices; currentPointer; currentPointer = currentPointer->next)
        shown += written(writeGlobalLines);
    EXPECT_EQ(shown, example("MouseInfo", 1));
}

TEST_F(ManualExamplesTest, CardModesAndMonitor) {
    loadCardList();
    testing::internal::CaptureStdout();
    printNumberedList(cardList);
    ASSERT_EQ(testing::internal::GetCapturedStdout(), example("CardInfo", 1));
    EXPECT_EQ(timingCount(*currentDescription), 1u);

    ScreenConfig screen{cardList, false, readDisplayEntry(*cardList), {1, 2, 3}, 1024, 768, 8};
    std::string menu;
    for (const VideoMode *mode = screen.modes.get(); mode; mode = mode->next)
        menu += mode->label + "\n";
    ASSERT_EQ(menu, example("DisplayConfig", 1));
    const std::string section = written([&](std::string &out) { writeScreenSection(out, screen); });
    EXPECT_EQ(section, example("DisplayConfig", 2));
    EXPECT_NE(section.find(example("vdif", 1)), section.npos) << section;
}
