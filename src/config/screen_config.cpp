#include "config/screen_config.h"

#include <string_view>

#include "base/allocation.h"
#include "base/lasting_memory.h"
#include "base/line_reader.h"
#include "base/messages.h"
#include "base/text_scanner.h"
#include "config/config_lines.h"

static constexpr std::string_view SCREEN_CARD = "Card ", SCREEN_VIRTUAL = "Virtual ",
                                  SCREEN_DEPTH = "Depth ";

std::array<ScreenConfig, SCREEN_MAX> screens;
int screenCount = 0;
int currentScreen = 0;

static CardEntry placeholderCard = {nullptr, "NOT CONFIGURED", "none", {}, 0};

struct SectionReader {
    const std::string &path;
    int index;
    ScreenConfig screen = {};
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
    const auto size = scanModeSize(line);
    if (!size)
        return;
    ScreenConfig &screen = section.screen;
    if (screen.selection.size() == SCREEN_MODE_MAX) {
        reportSurplus(section);
        return;
    }
    auto *mode = new VideoMode;
    mode->label = copyLine(line);
    mode->depth = screen.depth;
    mode->hDisplay = size->width;
    mode->vDisplay = size->height;
    appendRecord(section.modes, mode);
    screen.selection.push_back(static_cast<int>(screen.selection.size()) + 1);
}

std::optional<ModeSize> scanModeSize(std::string_view line) {
    if (!scanLiteral(line, "\""))
        return std::nullopt;
    const auto width = scanInt(line);
    const auto height = width && scanLiteral(line, "x") ? scanInt(line) : std::nullopt;
    return height ? std::optional(ModeSize{*width, *height}) : std::nullopt;
}

std::optional<ScreenConfig> parseScreenSection(const FilePlace &place, int index) {
    auto reader = openLines(place, CONFIG_PIECE_MAX);
    if (!reader)
        fatalError("failed to open file %s\n", place.path.c_str());
    SectionReader section{place.path, index};
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
            readSetting(section.screen, line);
    }
    section.screen.modes.reset(section.modes.head);
    return number >= index ? std::optional(std::move(section.screen)) : std::nullopt;
}

void appendPlaceholderScreen() {
    ScreenConfig &screen = screens[screenCount++];
    screen = ScreenConfig{};
    screen.card = &placeholderCard;
}
