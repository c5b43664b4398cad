// What the readers of hardware data and configurations make of their files, as texts. The files are
// pairs of tests/data, "MouseInfo" and "MouseInfo.read", and the examples of the manual pages.
#include <algorithm>
#include <map>
#include <sstream>

#include "base/paths.h"
#include "config/config_lines.h"
#include "config/config_writer.h"
#include "config/pointer_line.h"
#include "frame/numbered_list.h"
#include "support/temp_dir.h"
#include "vdif/vdif_reader.h"

using Text = std::ostringstream;
using namespace std::string_literals;

static CardEntry fastCard = {nullptr, "Acme", "fast", {}, 0};

static std::string shownCards() {
    cardList = nullptr;
    loadCardList();
    Text shown;
    for (const CardEntry *card = cardList; card; card = card->next)
        shown << '[' << card->name << "] " << card->cardClass << '\n' << card->extraLines;
    return shown.str();
}

static std::string shownDevices() {
    pointerDevices = nullptr;
    loadPointerDevices();
    Text shown;
    for (const PointerDevice *device = pointerDevices; device; device = device->next)
        shown << '[' << device->name << "] " << device->type << ' ' << device->buttons << ' '
              << device->device.value_or("-") << '\n';
    return shown.str();
}

static std::string shownModes() {
    fastCard.flags = 0;
    const ModeList modes = readDisplayEntry(fastCard);
    Text shown;
    shown << (fastCard.flags == CARD_NO_VIRTUAL ? "NoVirtual\n" : "");
    for (const VideoMode *m = modes.get(); m; m = m->next)
        shown << m->label << '|' << m->name << '|' << m->depth << ' ' << m->refresh << ' '
              << m->clock << '|' << m->hDisplay << ' ' << m->hSyncStart << ' ' << m->hSyncEnd << ' '
              << m->hTotal << ' ' << m->vDisplay << ' ' << m->vSyncStart << ' ' << m->vSyncEnd
              << ' ' << m->vTotal << '|' << m->timingRef.value_or("-") << '|' << m->flags << '\n'
              << m->extraLines;
    return shown.str();
}

// The slots that are not absent.
static std::string shownSlots() {
    configLines = readConfigLines("etc/X11/Xconfig");
    Text shown;
    for (const ConfigLine *line = configLines; line; line = line->next)
        if (line->state != LineState::Absent)
            shown << (line->state == LineState::Active ? "" : "# ") << line->keyword
                  << (line->value ? " [" + *line->value + "]" : "") << '\n';
    return shown.str();
}

static std::string shownSections() {
    Text shown;
    for (int index = 0; const auto screen = parseScreenSection("etc/X11/Xconfig", index); index++) {
        shown << '[' << (screen->card ? screen->card->name : "-") << "] " << screen->virtualWidth
              << ' ' << screen->virtualHeight << ' ' << screen->depth;
        for (const int position : screen->selection)
            shown << ", " << position;
        for (const VideoMode *mode = screen->modes.get(); mode; mode = mode->next)
            shown << '\n'
                  << mode->label << '|' << mode->depth << ' ' << mode->hDisplay << ' '
                  << mode->vDisplay;
        shown << '\n';
    }
    return shown.str();
}

struct Reader {
    std::string path;
    std::string (*show)();
};
static const std::map<std::string, Reader> READERS = {
    {"CardInfo", {CARD_LIST_PATH, shownCards}},
    {"DisplayConfig", {displayConfigPath("fast"), shownModes}},
    {"MouseInfo", {POINTER_LIST_PATH, shownDevices}},
    {"Xconfig.lines", {"etc/X11/Xconfig", shownSlots}},
    {"Xconfig.sections", {"etc/X11/Xconfig", shownSections}}};

struct ReadersTest : TempDirTest {
    void SetUp() override { // process-wide: each case starts empty
        defaultDescription.reset();
        loadMonitorDescriptions(samplePath("one-timing.vda").c_str(), nullptr);
        cardList = nullptr;
        pointerDevices = nullptr;
        pointerChosen = false;
    }
    // What is read of a text, with the messages behind it.
    std::string read(const std::string &name, std::string_view text) {
        const Reader &reader = READERS.at(name);
        writeFile(reader.path, text);
        const std::string shown = reader.show();
        return shown + messages();
    }
};

TEST_F(ReadersTest, EveryKindOfLine) {
    for (const auto &[name, reader] : READERS)
        EXPECT_EQ(read(name, sampleFile(name)), sampleFile(name + ".read")) << name;
    EXPECT_EQ(listCount(configLines), 71);
}

// Of a longer line the next piece is a line of its own; behind a NUL byte a line is over.
TEST_F(ReadersTest, LinesEndAtTheirLimits) {
    const auto filler = [](std::size_t count) { return std::string(count, 'a'); };
    const auto blanks = [](std::size_t count) { return std::string(count, ' '); };
    const std::string card = "[" + filler(1022) + "] x\n", value = filler(1015),
                      mode = "   8 x    8,      256 colors at  8 Hz|8x8:fast/w|8 8 8|"
                             "8 0 0 0 8 0 0 0|w|0\n";
    std::string modes, shown = "[-] 5 6 0";
    for (int n = 1; n <= 99; n++) {
        modes += "\"640x480\"\n";
        shown += ", " + std::to_string(n);
    }
    for (int n = 1; n <= 99; n++)
        shown += "\n\"640x480\"|0 640 480";
    const std::string section = "Driver a\nVirtual 5" + blanks(1013) + "67\nModes\n" + modes;
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"CardInfo", "Class x\n" + filler(1021) + "\n" + filler(1022) + "\n" + filler(1022) + "z\n",
         "[" + filler(1021) + "] x\n" + card + card},
        {"CardInfo", "Class x\n" + filler(1022) + "a card\n", "[a card] x\n" + card},
        {"CardInfo", "Class x\n12345\n1234\nabcde", "[12345] x\n"},
        {"MouseInfo", "Mouse \"n\" t 2" + blanks(1009) + "/d\n", "[n] t 2 /\n"},
        {"DisplayConfig", "Modes\n8 8 8 8 8" + blanks(1012) + "wx y\n", mode},
        {"DisplayConfig", "NoVirtual\nModes\n8 8 8 8 8 w\0x\n"s, "NoVirtual\n" + mode},
        {"Xconfig.lines", "LogFile " + value + "Nice 5\n", "LogFile [" + value + "]\nNice [5]\n"},
        {"Xconfig.lines", "LogFile ab\0cd\nNice 5"s, "LogFile [ab]\nNice\n"},
        {"Xconfig.lines", "# LogFile ab\n# Nice 5", "# LogFile [ab]\n# Nice\n"},
        {"Xconfig.sections", section, shown + "\n"},
        {"Xconfig.sections", section + modes,
         shown + "\nScreen section 0 of etc/X11/Xconfig: only the first 99 modes are shown\n"}};
    for (const auto &[name, text, expected] : cases)
        EXPECT_EQ(read(name, text), expected) << text.substr(0, 30);
}

TEST_F(ReadersTest, NamesEndAtTheirLimits) {
    const std::string longest(127, 't'), longClass(250, 'c');
    writeFile("library", sampleFile("one-timing.vda") +
                             "[PREADJUSTED_TIMING] "
                             "PREADJUSTEDTIMINGNAME=\"" +
                             longest + "\"");
    defaultDescription.reset();
    loadMonitorDescriptions("library", nullptr);
    const std::string line = "8 8 8 8 \"" + longest;
    const std::string shown = read("DisplayConfig", "Modes\n" + line + "\"\n" + line + "x\"\n" +
                                                        line.substr(0, 135) + "\"\n");
    EXPECT_EQ(std::ranges::count(shown, '\n'), 2) << shown;
    CardEntry card = {nullptr, "", longClass, {}, 0};
    writeFile(displayConfigPath(longClass), "Modes\n8 8 8 8 8 w\n8 8 8 8 8 wx\n");
    const ModeList modes = readDisplayEntry(card);
    EXPECT_EQ(modes->name, "8x8:" + longClass + "/");
    EXPECT_EQ(modes->next->name, modes->name);
}

TEST_F(ReadersTest, WhatCannotBeReadOnEndsTheProcess) {
    const auto failed = testing::ExitedWithCode(1);
    EXPECT_EXIT(loadCardList(), failed, "Can't Open Card List .*CardInfo\n");
    EXPECT_EXIT(loadPointerDevices(), failed, "Can't Open file .*MouseInfo\n");
    EXPECT_EXIT(readDisplayEntry(fastCard), failed, "Can't open DisplayConfig entry .*/config\n");
    for (const std::string line : {"640 480 8 60\n", "8 8 8 8 \"\n", "8 8 8 8 8\n", "1 x"})
        EXPECT_EXIT(read("DisplayConfig", "Modes\n" + line), failed,
                    "^\nFatal error:\nInternal error, file " + line + "\n\n$");
}

TEST_F(ReadersTest, ThePointerOfAConfiguration) {
    read("MouseInfo", sampleFile("MouseInfo"));
    PointerDevice bus{nullptr, "", "Bus", 2, "/dev/bus"};
    const std::string made = "Mouse Bus /dev/bus\nButtons 2\n";
    const struct {
        const char *configuration, *name; // the name of the current device; null: there is none
        std::string written;
        PointerDevice *chosen = nullptr;
    } cases[] = {
        {"# Mouse Elo\nMouse Logi /dev/mine more\nButtons 9\n", "C", // of the last of its type
         "# Mouse Elo\nMouse Logi /dev/mine\nButtons 3\n"},
        {"Mouse Odd\nMouse Logi /dev/x\n", "", "Mouse Odd\nMouse Odd\n"},
        {"Mouse\t\t\t\n", nullptr, "Mouse \n"},
        {"", nullptr, made, &bus},
        {"# Mouse Elo\n# Mouse Logi\n", nullptr, made + "# Mouse Logi\n", &bus},
        {"# Mouse Elo\nMouse Odd\n", "", "# Mouse Elo\n" + made, &bus},
    };
    for (const auto &[configuration, name, written, chosen] : cases) {
        read("Xconfig.lines", configuration);
        setUpPointer();
        EXPECT_EQ(currentPointer ? currentPointer->name : "none", name ? name : "none");
        if (chosen)
            choosePointer(*chosen);
        std::string lines;
        writeGlobalLines(lines);
        EXPECT_EQ(lines, written + "\n\n\n");
    }
}

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

// No example is at fault, and what the pages show as the result comes out.
TEST_F(ReadersTest, TheExamplesOfTheManual) {
    writeFile("monitor.vda", example("vdif", 0));
    loadMonitorDescriptions(nullptr, "monitor.vda");
    writeFile(POINTER_LIST_PATH, example("MouseInfo", 0));
    loadPointerDevices();
    writeFile("etc/X11/Xconfig", example("Xconfig", 0));
    configLines = readConfigLines("etc/X11/Xconfig");
    setUpPointer();
    EXPECT_EQ(written(writeGlobalLines), example("Xconfig", 1));
    EXPECT_EQ(parseScreenSection("etc/X11/Xconfig", 0)->selection.size(), 2u);
    EXPECT_EQ(parseScreenSection("etc/X11/Xconfig", 1)->selection.size(), 1u);
    std::string shown;
    for (const PointerDevice *device = pointerDevices; device; device = device->next)
        writePointerLines(shown, *device);
    EXPECT_EQ(shown, example("MouseInfo", 1));

    writeFile(CARD_LIST_PATH, example("CardInfo", 0));
    loadCardList();
    testing::internal::CaptureStdout();
    printNumberedList(cardList);
    ASSERT_EQ(testing::internal::GetCapturedStdout(), example("CardInfo", 1));
    writeFile(displayConfigPath("a64"), example("DisplayConfig", 0));
    ScreenConfig screen{cardList, false, readDisplayEntry(*cardList), {1, 2, 3}, 1024, 768, 8};
    std::string menu;
    for (const VideoMode *mode = screen.modes.get(); mode; mode = mode->next)
        menu += mode->label + "\n";
    ASSERT_EQ(menu, example("DisplayConfig", 1));
    const std::string section = written([&](std::string &out) { writeScreenSection(out, screen); });
    EXPECT_EQ(section, example("DisplayConfig", 2));
    EXPECT_NE(section.find(example("vdif", 1)), section.npos) << section;
    EXPECT_EQ(messages(), "");
}
