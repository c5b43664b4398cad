#include "config/screen_config.h"

#include <string_view>

#include "base/allocation.h"
#include "base/lasting_memory.h"
#include "base/line_reader.h"
#include "base/messages.h"
#include "base/text_scanner.h"
#include "config/config_lines.h"

static constexpr std::string_view SCREEN_CARD = "Card ", SCREEN_VIRTUAL = "Virtual ",
                                  SCREEN_DEPTH = "Depth ", SCREEN_MODES = "Modes",
                                  SCREEN_MODE_DB = "ModeDB";

std::array<ScreenConfig, SCREEN_MAX> screens;
int screenCount = 0;
int currentScreen = 0;
int templateUsed = 0;

static CardEntry placeholderCard = {nullptr, "NOT CONFIGURED", "none", {}, 0};

struct SectionReader {
    const std::string &path;
    int index;
    ScreenConfig &screen;
    ListBuilder<VideoMode> modes = {};
    bool inModes = false;
    bool surplusReported = false; // of modes beyond SCREEN_MODE_MAX
};

static CardEntry *makeCard(std::string_view name) {
    const AllocationGuard guard;
    try {
        return keepRecord(CardEntry{nullptr, keepText(chopNewline(name)), {}, {}, 0});
    } catch (const std::bad_alloc &) {
        fatalError("could not allocate screen->card\n");
    }
}

// A setting with fewer numbers than it needs leaves the screen as it is.
static void readSetting(ScreenConfig &screen, std::string_view line) {
    if (scanLiteral(line, SCREEN_CARD)) {
        screen.card = makeCard(line);
    } else if (scanLiteral(line, SCREEN_VIRTUAL)) {
        const auto width = scanInt(line), height = scanInt(line);
        if (width && height) {
            screen.virtualWidth = *width;
            screen.virtualHeight = *height;
        }
    } else if (scanLiteral(line, SCREEN_DEPTH)) {
        screen.depth = scanInt(line).value_or(screen.depth);
    }
}

static void reportSurplus(SectionReader &section) {
    if (!section.surplusReported)
        showMessage("Screen section %d of %s: only the first %d modes are shown\n", section.index,
                    section.path.c_str(), SCREEN_MODE_MAX);
    section.surplusReported = true;
}

static void readModeLine(SectionReader &section, std::string_view line) {
    std::string_view text = line;
    if (!scanLiteral(text, "\""))
        return;
    const auto width = scanInt(text);
    const auto height = width && scanLiteral(text, "x") ? scanInt(text) : std::nullopt;
    if (!height)
        return;
    ScreenConfig &screen = section.screen;
    if (screen.selection.size() == SCREEN_MODE_MAX) {
        reportSurplus(section);
        return;
    }
    auto *mode = new VideoMode;
    mode->label = copyLine(line);
    mode->depth = screen.depth;
    mode->hDisplay = *width;
    mode->vDisplay = *height;
    appendRecord(section.modes, mode);
    screen.selection.push_back(static_cast<int>(screen.selection.size()) + 1);
}

bool parseScreenSection(const std::string &path, int index, ScreenConfig &screen) {
    auto reader = openLines(path, CONFIG_PIECE_MAX);
    if (!reader)
        fatalError("failed to open file %s\n", path.c_str());
    screen = ScreenConfig{};
    screen.unchanged = 1;
    SectionReader section{path, index, screen};
    int number = -1; // of the section that is being read
    std::string_view line;
    while (number <= index && readLine(*reader, line)) {
        if (line.starts_with(CONFIG_SECTION_START))
            number++;
        if (number != index)
            continue;
        if (section.inModes && line.starts_with(SCREEN_MODE_DB))
            break;
        if (section.inModes)
            readModeLine(section, line);
        else if (line.starts_with(SCREEN_MODES))
            section.inModes = true;
        else
            readSetting(screen, line);
    }
    screen.modes.reset(section.modes.head);
    return number >= index;
}

void appendPlaceholderScreen() {
    ScreenConfig &screen = screens[screenCount++];
    screen = ScreenConfig{};
    screen.card = &placeholderCard;
    screen.unchanged = 1;
}
