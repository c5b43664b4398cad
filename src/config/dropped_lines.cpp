#include "config/dropped_lines.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <span>
#include <vector>

#include "base/text_scanner.h"
#include "config/config_lines.h"
#include "config/pointer_line.h"
#include "config/screen_config.h"

static constexpr auto DROPPED_POINTER_LINES =
    std::to_array<std::string_view>({"Mouse ", "Buttons "});
static constexpr auto DROPPED_SCREEN_LINES =
    std::to_array<std::string_view>({"Card ", "Virtual ", "Depth ", "BitsPerPixel ", SCREEN_MODES});

static bool beginsWithOneOf(std::string_view line, std::span<const std::string_view> beginnings) {
    return std::ranges::any_of(beginnings,
                               [line](std::string_view text) { return line.starts_with(text); });
}

// The next line of a text, without its line end, which are both taken off.
static std::string_view takeLine(std::string_view &text) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    return line;
}

static bool isBlank(char character) { return character == ' ' || character == '\t'; }

// The line as it is compared: blanks stand between two words, one each.
static std::string comparedLine(std::string_view line) {
    std::string compared;
    for (const char character : line) {
        const bool blank = isBlank(character);
        const bool counts = !compared.empty() && compared != "#" && !isBlank(compared.back());
        if (!blank)
            compared += character;
        else if (counts)
            compared += ' ';
    }
    if (compared.ends_with(' '))
        compared.pop_back();
    return compared;
}

static std::vector<std::string> comparedLines(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty())
        if (std::string line = comparedLine(takeLine(text)); !line.empty())
            lines.push_back(std::move(line));
    std::ranges::sort(lines);
    return lines;
}

int countDroppedLines(std::string_view oldText, std::string_view newText) {
    std::vector<std::string> dropped;
    std::ranges::set_difference(comparedLines(oldText), comparedLines(newText),
                                std::back_inserter(dropped));
    return static_cast<int>(dropped.size());
}

// Where a line stands: behind which section's beginning, and of what is read of a section.
struct LinePlace {
    int section = -1; // -1: in the global region
    bool inModes = false, inModeDb = false;
};

static void enterLine(LinePlace &place, std::string_view line) {
    if (line.starts_with(CONFIG_SECTION_START))
        place = {place.section + 1};
    place.inModeDb = place.inModeDb || (place.inModes && line.starts_with(SCREEN_MODE_DB));
    place.inModes = place.inModes || line.starts_with(SCREEN_MODES);
}

static bool isReplaced(const LinePlace &place, std::string_view line) {
    if (place.section < 0)
        return pointerChosen && beginsWithOneOf(skipWhiteSpace(line), DROPPED_POINTER_LINES);
    if (place.section >= screenCount || screens[place.section].unchanged || place.inModeDb)
        return false;
    return beginsWithOneOf(line, DROPPED_SCREEN_LINES) || (place.inModes && scanModeSize(line));
}

std::string withoutReplacedLines(std::string_view text) {
    std::string kept;
    LinePlace place;
    while (!text.empty()) {
        const std::string_view line = takeLine(text);
        enterLine(place, line);
        if (!isReplaced(place, line))
            kept.append(line) += '\n';
    }
    return kept;
}
