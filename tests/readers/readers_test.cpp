// What the readers of hardware data and configurations make of their files, as texts: of pairs in
// tests/data such as "MouseInfo" and "MouseInfo.read", of cases and of the manual's examples.
#include <functional>
#include <map>
#include <regex>

#include "base/paths.h"
#include "base/text_scanner.h"
#include "config/config_lines.h"
#include "config/config_writer.h"
#include "config/pointer_line.h"
#include "frame/numbered_list.h"
#include "support/cases.h"
#include "vdif/vdif_reader.h"

static const std::string LONG_CLASS(250, 'c');

static std::string shownCards() {
    cardList = nullptr;
    loadCardList();
    std::ostringstream shown;
    for (const CardEntry *card = cardList; card; card = card->next)
        shown << '[' << card->name << "] " << card->cardClass << '\n' << card->extraLines;
    return shown.str();
}

static std::string shownDevices() {
    pointerDevices = nullptr;
    loadPointerDevices();
    std::ostringstream shown;
    for (const PointerDevice *device = pointerDevices; device; device = device->next)
        shown << '[' << device->name << "] " << device->type << ' ' << device->buttons << ' '
              << device->device.value_or("-") << '\n';
    return shown.str();
}

static std::string shownModes(std::string_view cardClass) {
    CardEntry card = {nullptr, "Acme", cardClass, {}, 0};
    const ModeList modes = readDisplayEntry(card);
    std::ostringstream shown;
    shown << (card.flags == CARD_NO_VIRTUAL ? "NoVirtual\n" : "");
    for (const VideoMode *m = modes.get(); m; m = m->next)
        shown << m->label << '|' << m->name << '|' << m->depth << ' ' << m->refresh << ' '
              << m->clock << '|' << m->hDisplay << ' ' << m->hSyncStart << ' ' << m->hSyncEnd << ' '
              << m->hTotal << ' ' << m->vDisplay << ' ' << m->vSyncStart << ' ' << m->vSyncEnd
              << ' ' << m->vTotal << '|' << m->timingRef.value_or("-") << '|' << m->flags << '\n'
              << m->extraLines;
    return shown.str();
}

// The mode of vga60.vda with a word for the configuration of its sync and more text at its end.
static std::string shownTiming(const std::string &sync) {
    std::string monitor = sampleFile("vga60.vda") + readFile("monitor");
    writeFile("monitor", monitor.replace(monitor.find("$sync"), 5, sync));
    currentDescription = readMonitorDescription("monitor", true);
    writeFile(displayConfigPath("fast"), "Modes\n640 480 8 60 \"vga60\"\n");
    return shownModes("fast");
}

// The slots that are not absent.
static std::string shownSlots() {
    configLines = readConfigLines("etc/X11/Xconfig");
    std::ostringstream shown;
    for (const ConfigLine *line = configLines; line; line = line->next)
        if (line->state != LineState::Absent)
            shown << (line->state == LineState::Active ? "" : "# ") << line->keyword
                  << (line->value ? " [" + *line->value + "]" : "") << '\n';
    return shown.str();
}

static std::string shownSections() {
    std::ostringstream shown;
    for (int index = 0; const auto screen = parseScreenSection("etc/X11/Xconfig", index); index++) {
        shown << '[' << (screen->card ? screen->card->name : "-") << "] " << screen->virtualWidth
              << ' ' << screen->virtualHeight << ' ' << screen->depth;
        for (const int position : screen->selection)
            shown << ", " << position;
        shown << '\n';
        for (const VideoMode *mode = screen->modes.get(); mode; mode = mode->next)
            shown << mode->label << '|' << mode->depth << ' ' << mode->hDisplay << ' '
                  << mode->vDisplay << '\n';
    }
    return shown.str();
}

static PointerDevice bus{nullptr, "", "Bus", 2, "/dev/bus"};

// The current pointer and the lines that are written; `chosen`: another one is chosen meanwhile.
static std::string shownPointer(PointerDevice *chosen) {
    configLines = readConfigLines("etc/X11/Xconfig");
    setUpPointer();
    std::string shown = currentPointer ? "now " + currentPointer->name + "\n" : "";
    if (chosen)
        choosePointer(*chosen);
    writeGlobalLines(shown);
    EXPECT_TRUE(shown.ends_with("\n\n\n"));
    return shown.erase(shown.size() - 3);
}

// The path of each reader's file, and what shows what is read of it.
static const std::map<std::string, std::pair<std::string, std::function<std::string()>>> READERS = {
    {"CardInfo", {CARD_LIST_PATH, shownCards}},
    {"DisplayConfig", {displayConfigPath("fast"), [] { return shownModes("fast"); }}},
    {"long class", {displayConfigPath(LONG_CLASS), [] { return shownModes(LONG_CLASS); }}},
    {"MouseInfo", {POINTER_LIST_PATH, shownDevices}},
    {"Xconfig.lines", {CONFIG_PATH, shownSlots}},
    {"Xconfig.modes", {CONFIG_PATH, shownSections}},
    {"Xconfig.sections", {CONFIG_PATH, shownSections}},
    {"pointer", {CONFIG_PATH, [] { return shownPointer(nullptr); }}},
    {"chosen", {CONFIG_PATH, [] { return shownPointer(&bus); }}},
    {"timing", {"monitor", [] { return shownTiming("GP"); }}},
    {"green", {"monitor", [] { return shownTiming("G"); }}}};

struct ReadersTest : TempDirTest {
    void SetUp() override { // process-wide: each case starts empty
        cardList = nullptr;
        pointerDevices = nullptr;
        pointerChosen = false;
        writeFile("library", sampleFile("one-timing.vda") + "[PREADJUSTED_TIMING] " +
                                 "PREADJUSTEDTIMINGNAME=\"" + std::string(127, 't') + "\"");
        defaultDescription.reset();
        loadMonitorDescriptions("library", nullptr);
    }
    // What is read of a text, with the messages behind it.
    std::string read(const std::string &name, std::string_view text) {
        const auto &[path, show] = READERS.at(name);
        writeFile(path, text);
        const std::string shown = show();
        return shown + messages();
    }
};

TEST_F(ReadersTest, EveryKindOfLine) {
    for (const std::string name : {"CardInfo", "DisplayConfig", "MouseInfo", "Xconfig.sections",
                                   "Xconfig.modes", "Xconfig.lines"})
        EXPECT_EQ(read(name, sampleFile(name)), sampleFile(name + ".read"));
    EXPECT_EQ(listCount(configLines), 71);
    const auto outcome = [this](const std::string &name, const std::string &text) {
        if (name == "pointer")
            read("MouseInfo", sampleFile("MouseInfo"));
        return read(name, text);
    };
    expectCases("readers.cases", outcome);
    expectCases("mode-timing.cases", outcome);
    expectCases("integers.cases", [](const std::string &, std::string_view text) {
        const auto value = scanInt(text);
        return (value ? std::to_string(*value) : "none") + "|" + std::string(text);
    });
}

TEST_F(ReadersTest, WhatCannotBeReadOnEndsTheProcess) {
    const auto failed = testing::ExitedWithCode(1);
    EXPECT_EXIT(loadCardList(), failed, "Can't Open Card List .*CardInfo\n");
    EXPECT_EXIT(loadPointerDevices(), failed, "Can't Open file .*MouseInfo\n");
    EXPECT_EXIT(shownModes("fast"), failed, "Can't open DisplayConfig entry .*/config\n");
    for (const std::string line : {"640 480 8 60\n", "8 8 8 8 \"\n", "8 8 8 8 8\n", "1 x"})
        EXPECT_EXIT(read("DisplayConfig", "Modes\n" + line), failed,
                    "^\nFatal error:\nInternal error, file " + line + "\n\n$");
}

// The n-th example of a page, from 0, with the one escape that examples have taken back.
static std::string example(const std::string &name, int n) {
    static const std::regex block("\n\\.EX\n([^]*?)\\.EE\n"), minus("\\\\-");
    const std::string page = readFile(SCRCONF_SOURCE_DIR "/man/scrconf-" + name + ".5");
    const std::sregex_iterator first(page.begin(), page.end(), block);
    return std::regex_replace((*std::next(first, n))[1].str(), minus, "-");
}

// A text without the blanks at line ends and the empty lines around it, which a page does not show.
static std::string onPage(const std::string &text) {
    const std::string lines = std::regex_replace(text, std::regex(" +\n"), "\n");
    const std::size_t begin = lines.find_first_not_of('\n');
    return lines.substr(begin, lines.find_last_not_of('\n') + 2 - begin);
}

// No example is at fault, and what the pages show as the result comes out.
TEST_F(ReadersTest, TheExamplesOfTheManual) {
    const std::pair<const char *, std::string> files[] = {
        {"vdif", "monitor.vda"},
        {"MouseInfo", POINTER_LIST_PATH},
        {"Xconfig", CONFIG_PATH},
        {"CardInfo", CARD_LIST_PATH},
        {"DisplayConfig", displayConfigPath("a64")}};
    for (const auto &[page, path] : files)
        writeFile(path, example(page, 0));
    loadMonitorDescriptions(nullptr, "monitor.vda");
    loadPointerDevices();
    loadCardList();
    configLines = readConfigLines(CONFIG_PATH);
    setUpPointer();
    std::string global, lines, labels, section;
    writeGlobalLines(global);
    EXPECT_EQ(onPage(global), example("Xconfig", 1));
    for (const PointerDevice *device = pointerDevices; device; device = device->next)
        writePointerLines(lines, *device);
    EXPECT_EQ(lines, example("MouseInfo", 1));
    testing::internal::CaptureStdout();
    printNumberedList(cardList);
    ASSERT_EQ(testing::internal::GetCapturedStdout(), example("CardInfo", 1));
    ScreenConfig screen{cardList, false, readDisplayEntry(*cardList), {1, 2, 3}, 1024, 768, 8};
    for (const VideoMode *mode = screen.modes.get(); mode; mode = mode->next)
        labels += mode->label + "\n";
    EXPECT_EQ(labels, example("DisplayConfig", 1));
    writeScreenSection(section, screen);
    EXPECT_EQ(onPage(section), example("DisplayConfig", 2));
    EXPECT_NE(onPage(section).find(example("vdif", 1)), section.npos) << section;
    EXPECT_EQ(messages(), "");
}
