// The data files that are installed, read by the program's own readers. tools/lint-data runs these
// cases alone.
#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <sstream>

#include "base/lists.h"
#include "base/paths.h"
#include "config/config_lines.h"
#include "config/pointer_line.h"
#include "config/screen_config.h"
#include "support/temp_dir.h"
#include "vdif/mode_timing.h"
#include "vdif/vdif_reader.h"

namespace fs = std::filesystem;

static constexpr std::size_t CARD_NAME_MAX = 55; // characters that every screen has room for

struct ShippedDataTest : TempDirTest {
    void SetUp() override {
        fs::create_directories("usr/lib/X11");
        fs::create_directory_symlink(SCRCONF_SOURCE_DIR "/data/Korvel", "usr/lib/X11/Korvel");
        defaultDescription.reset();
        loadMonitorDescriptions(TIMING_LIBRARY_PATH, nullptr);
        cardList = nullptr;
        loadCardList();
        pointerDevices = nullptr;
        configLines = readConfigLines(TEMPLATE_PATH);
        loadPointerDevices();
        setUpPointer();
        ASSERT_EQ(messages(), "");
    }
};

// What an entry says in the lines that only people and the catalogue read.
struct EntryText {
    std::map<int, int> limits;        // MHz by depth
    std::string chipset;              // the first line with this word in any letter case
    std::set<std::string> references; // names of monitor timings
};

static EntryText readEntryText(const std::string &path) {
    EntryText entry;
    std::istringstream lines(readFile(path));
    for (std::string line; std::getline(lines, line);) {
        int depth = 0, limit = 0;
        if (std::sscanf(line.c_str(), "# Clock limit: depth %d %d MHz", &depth, &limit) == 2)
            entry.limits[depth] = limit;
        std::string lower = line;
        std::ranges::transform(lower, lower.begin(),
                               [](unsigned char c) { return std::tolower(c); });
        if (entry.chipset.empty() && lower.find("chipset") != lower.npos)
            entry.chipset = line;
        if (const auto quote = line.find('"'); !line.starts_with('#') && quote != line.npos)
            entry.references.insert(line.substr(quote + 1, line.rfind('"') - quote - 1));
    }
    return entry;
}

// Numbers beside a full or a monitor timing are those of the timing; the refresh is nominal, up to
// 1 Hz off, or a code.
static bool fitsItsNumbers(const VideoMode &mode) {
    if (mode.timingRef)
        return true;
    const std::string size = std::to_string(mode.hDisplay) + "x" + std::to_string(mode.vDisplay);
    const float rate = mode.clock * 1'000'000 / static_cast<float>(mode.hTotal * mode.vTotal);
    return mode.name == size &&
           (mode.refresh < 0 || std::abs(rate - static_cast<float>(mode.refresh)) < 1);
}

static void checkEntry(CardEntry &card) {
    ASSERT_EXIT((readDisplayEntry(card), std::exit(0)), testing::ExitedWithCode(0), "^$")
        << card.cardClass;
    const EntryText text = readEntryText(displayConfigPath(card.cardClass));
    EXPECT_TRUE(text.chipset.starts_with("Chipset ") && text.chipset.size() > 8)
        << card.cardClass << ": " << text.chipset;
    for (const std::string &name : text.references)
        EXPECT_TRUE(findTiming(*currentDescription, name)) << card.cardClass << ": " << name;
    std::set<std::string> labels;
    const ModeList modes = readDisplayEntry(card);
    EXPECT_TRUE(modes) << card.cardClass << " has no modes";
    for (const VideoMode *mode = modes.get(); mode; mode = mode->next) {
        const auto limit = text.limits.find(mode->depth);
        EXPECT_TRUE(limit != text.limits.end() && mode->clock <= static_cast<float>(limit->second))
            << card.cardClass << ", clock limit: " << mode->label << ", " << mode->clock << " MHz";
        EXPECT_TRUE(fitsItsNumbers(*mode)) << card.cardClass << ", timing: " << mode->label;
        EXPECT_TRUE(labels.insert(mode->label).second)
            << card.cardClass << ", twice: " << mode->label;
    }
}

TEST_F(ShippedDataTest, EveryCardHasANameOfItsOwnAndAnEntry) {
    std::set<std::string> names, folders;
    std::map<std::string_view, CardEntry *> classes;
    for (CardEntry *card = cardList; card; card = card->next) {
        const auto shown = card->name.substr(card->name.find(':') + 1);
        EXPECT_TRUE(names.insert(std::string(shown)).second) << "twice: " << shown;
        EXPECT_LE(card->name.size(), CARD_NAME_MAX) << card->name;
        classes.emplace(card->cardClass, card);
    }
    for (const auto &[name, card] : classes)
        checkEntry(*card);
    for (const auto &folder : fs::directory_iterator(DISPLAY_CONFIG_DIR))
        EXPECT_TRUE(classes.contains(folder.path().filename().string()))
            << "no card has the class " << folder.path().filename();
}

TEST_F(ShippedDataTest, PointersHaveNamesOfTheirOwnAndTheTemplateHasEveryKeyword) {
    std::set<std::string> names;
    for (const PointerDevice *device = pointerDevices; device; device = device->next)
        EXPECT_TRUE(names.insert(device->name).second) << "twice: " << device->name;
    ASSERT_TRUE(currentPointer);
    EXPECT_TRUE(names.contains(currentPointer->name)) << currentPointer->type;
    std::set<std::string_view> missing, given;
    for (const ConfigLine *line = configLines; line; line = line->next)
        (line->state == LineState::Absent ? missing : given).insert(line->keyword);
    for (const std::string_view keyword : missing)
        EXPECT_TRUE(given.contains(keyword)) << keyword;
}

TEST_F(ShippedDataTest, TheScreensOfTemplateAndSampleAreOfKnownCards) {
    std::set<std::string_view> cards;
    for (const CardEntry *card = cardList; card; card = card->next)
        cards.insert(card->name);
    for (const std::string path : {TEMPLATE_PATH, SCRCONF_SOURCE_DIR "/data/sample/Xconfig"}) {
        int index = 0;
        for (; const auto screen = parseScreenSection(path, index); index++) {
            EXPECT_TRUE(screen->card && cards.contains(screen->card->name))
                << path << ", " << index;
            EXPECT_TRUE(screen->modes && screen->depth > 0) << path << ", " << index;
        }
        EXPECT_GT(index, 0) << path;
    }
}
