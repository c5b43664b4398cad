#include "config/config_lines.h"

#include <array>

#include "base/line_reader.h"
#include "base/lists.h"
#include "base/messages.h"
#include "base/text_scanner.h"

// The blank before a value is looked for from the third character on: the one in the "# " of a
// comment separates no value, and no keyword is shorter.
static constexpr std::size_t CONFIG_VALUE_FROM = 2;

// One slot per entry, in the order in which the new file gets them.
// clang-format off
static constexpr auto CONFIG_KEYWORDS = std::to_array<std::string_view>({
    "OScode", "LogFile", "Mouse", "AdditionalDevice", "Mouse", "Buttons", "Emulate3Buttons",
    "BaudRate", "DataBits", "StopBits", "Parity", "ReportRate", "TouchScreen", "TouchCalibration",
    "TouchCoordinates", "TouchAjustX", "TouchAjustY", "TouchZThreshold", "TouchButton4",
    "TouchScreenNo", "TouchConfigurable", "Nice", "Trace", "FontPath", "ToggleCalibration",
    "ToggleSwitchAction", "ToggleRedrawAction", "ToggleLockAction", "VisualClass", "SnfFormat",
    "RemapCursorPad", "NoLEDs", "XLEDs", "NoBackingStore", "ShareMouse", "NotPrimaryMonitor",
    "HotKeyExit", "ScoHotKeyExit", "DisplayDevice", "Email", "PhysicalBase", "Linear",
    "XscreenSaverDelay", "DPMSstandbyDelay", "DPMSsuspendDelay", "DPMSoffDelay",
    "ScreenLayout", "ScreenLayout", "ScreenLayout", "ScreenLayout",
    "Option", "Option", "Option", "Option", "Option", "Option", "Option", "Option", "Option",
    "Option", "Option", "Option", "Option", "Option", "Option", "Option", "Option", "Option",
    "Option", "Option", "Video",
});
// clang-format on

ConfigLine *configLines = nullptr;

struct LineKeyword {
    std::string_view word;
    std::string_view rest; // of the line, behind the word
    LineState state;
};

// None for a line of white space.
static std::optional<LineKeyword> classifyLine(std::string_view line) {
    std::string_view rest = line;
    if (scanLiteral(rest, "#"))
        if (const auto word = scanWord(rest))
            return LineKeyword{*word, rest, LineState::Commented};
    rest = line;
    if (const auto word = scanWord(rest))
        return LineKeyword{*word, rest, LineState::Active};
    return std::nullopt;
}

// A value exists when the line is long enough for keyword, separator, one character and line end.
// It is the text behind the first blank that can stand between keyword and value or, when only tabs
// stand there, behind the white space that follows the keyword.
static std::optional<std::string> parseValue(std::string_view line, const LineKeyword &keyword) {
    const std::size_t around = keyword.state == LineState::Active ? 2 : 4;
    if (line.size() <= keyword.word.size() + around)
        return std::nullopt;
    if (const auto blank = line.find(' ', CONFIG_VALUE_FROM); blank != line.npos)
        return copyLine(line.substr(blank + 1));
    return copyLine(skipWhiteSpace(keyword.rest));
}

ConfigLine *findFreeSlot(ConfigLine *head, std::string_view keyword) {
    while (head && (head->keyword != keyword || head->value))
        head = head->next;
    return head;
}

ConfigLine *readConfigLines(const FilePlace &place) {
    auto reader = openLines(place, CONFIG_PIECE_MAX);
    if (!reader)
        return nullptr;
    ConfigLine *head = listFromTable(CONFIG_KEYWORDS, &ConfigLine::keyword);
    std::string_view line;
    while (readLine(*reader, line) && !line.starts_with(CONFIG_SECTION_START)) {
        if (line.size() <= 1)
            continue;
        const auto keyword = classifyLine(line);
        ConfigLine *slot = keyword ? findFreeSlot(head, keyword->word) : nullptr;
        if (!slot)
            continue;
        slot->state = keyword->state;
        slot->value = parseValue(line, *keyword);
    }
    return head;
}
