#include "hwdb/display_entry.h"

#include <algorithm>
#include <array>
#include <memory>
#include <span>
#include <utility>

#include "base/line_reader.h"
#include "base/lists.h"
#include "base/messages.h"
#include "base/number_text.h"
#include "base/paths.h"
#include "base/text_scanner.h"
#include "hwdb/extra_lines.h"

static constexpr std::string_view DISPLAY_NO_VIRTUAL = "NoVirtual";
static constexpr std::size_t DISPLAY_TIMING_WORD_MAX = 31;  // characters
static constexpr std::size_t DISPLAY_TIMING_NAME_MAX = 127; // characters
static constexpr std::size_t DISPLAY_TEXT_MAX = 255;        // characters of a label or a name
static constexpr std::size_t DISPLAY_LABEL_USUAL = 60; // characters, of nearly every label at most

// Texts for the refresh codes -1, -2, ...
static constexpr std::array<const char *, 4> DISPLAY_REFRESH_LABELS = {
    "(Refresh Rate from DOS Install)", "", "Non Interlaced", "Interlaced"};

// What every mode line begins with.
struct ModeHead {
    int width = 0, height = 0; // pixels
    int depth = 0;             // bits per pixel
    int refresh = 0;           // Hz or a code
};

struct EntryReader {
    CardEntry &card;
    std::string path;
    ListBuilder<VideoMode> modes;
    bool inModes = false;
    bool dropExtraLines = false; // those of a mode that was not made
    // Releases the modes that nobody took over.
    ~EntryReader() { FreeRecords()(modes.head); }
};

// Stores the next integers of the text in these fields; false when there are not as many, and the
// ones before the gap are gone from the text then.
static bool scanInts(std::string_view &text, std::span<int *const> fields) {
    for (int *field : fields) {
        const auto value = scanInt(text);
        if (!value)
            return false;
        *field = *value;
    }
    return true;
}

static std::optional<ModeHead> scanHead(std::string_view &text) {
    ModeHead head;
    const std::array fields = {&head.width, &head.height, &head.depth, &head.refresh};
    return scanInts(text, fields) ? std::optional(head) : std::nullopt;
}

static std::uint32_t scanFlags(std::string_view &text) {
    return static_cast<std::uint32_t>(scanInt(text).value_or(0));
}

static std::unique_ptr<VideoMode> parseFullTiming(std::string_view text) {
    auto mode = std::make_unique<VideoMode>();
    int clock = 0;
    const std::array fields = {&clock,        &mode->hDisplay, &mode->hSyncStart, &mode->hSyncEnd,
                               &mode->hTotal, &mode->vDisplay, &mode->vSyncStart, &mode->vSyncEnd,
                               &mode->vTotal};
    if (!scanInts(text, fields))
        return nullptr;
    mode->clock = static_cast<float>(clock);
    mode->flags = scanFlags(text);
    return mode;
}

static std::unique_ptr<VideoMode> parseTimingWord(std::string_view text, const ModeHead &head) {
    const auto clock = scanInt(text);
    const auto word = clock ? scanWord(text, DISPLAY_TIMING_WORD_MAX) : std::nullopt;
    if (!word)
        return nullptr;
    auto mode = std::make_unique<VideoMode>();
    mode->hDisplay = head.width;
    mode->vDisplay = head.height;
    mode->clock = static_cast<float>(*clock);
    mode->timingRef = *word;
    mode->flags = scanFlags(text);
    return mode;
}

// True when more than white space follows the quote that a timing name begins with.
static bool namesMonitorTiming(std::string_view text) {
    text = skipWhiteSpace(text);
    return scanLiteral(text, "\"") && !skipWhiteSpace(text).empty();
}

// Null when the name is not terminated or the monitor description does not have it.
static std::unique_ptr<VideoMode> findMonitorMode(std::string_view line, const std::string &path) {
    const auto open = line.find('"'), close = line.rfind('"');
    if (open == close) {
        showMessage("Unterminated timing name in %s: %s\n", path.c_str(), copyLine(line).c_str());
        return nullptr;
    }
    const auto name = line.substr(open + 1, close - open - 1).substr(0, DISPLAY_TIMING_NAME_MAX);
    const auto timing = findTimingByName(name);
    if (!timing)
        return nullptr;
    auto mode = std::make_unique<VideoMode>();
    static_cast<ModeTiming &>(*mode) = *timing;
    return mode;
}

static void appendRefresh(std::string &label, int refresh) {
    if (refresh >= 0) {
        label += "at ";
        appendNumber(label, refresh, 2);
        label += " Hz";
        return;
    }
    const auto index = static_cast<std::size_t>(-(refresh + 1)); // the code -1 is the first
    if (index < DISPLAY_REFRESH_LABELS.size())
        label += DISPLAY_REFRESH_LABELS[index];
}

static std::string modeLabel(const ModeHead &head, std::uint32_t flags) {
    std::string label;
    label.reserve(DISPLAY_LABEL_USUAL);
    appendNumber(label, head.width, 4);
    label += " x ";
    appendNumber(label, head.height, 4);
    label += ", ";
    appendNumber(label, colorCount(head.depth), 8);
    label += " colors ";
    appendRefresh(label, head.refresh);
    if (flags & MODE_INTERLACE)
        label += " Interlaced";
    return label;
}

static std::string modeName(const ModeHead &head, std::string_view cardClass,
                            const std::optional<std::string> &timingRef) {
    std::string name;
    appendNumber(name, head.width, 0);
    name += 'x';
    appendNumber(name, head.height, 0);
    if (timingRef)
        name.append(":").append(cardClass).append("/").append(*timingRef);
    name.resize(std::min(name.size(), DISPLAY_TEXT_MAX));
    return name;
}

// The extra lines collected so far belong to the mode before the present line; without one they
// wait for the first mode.
static void settleExtraLines(EntryReader &entry) {
    if (!entry.modes.last)
        return;
    entry.modes.last->extraLines += takeExtraLines();
    clearExtraLines();
}

// Ends what belongs to the mode before and adds the line's own, if it makes one; a line that makes
// none takes the extra lines behind it along.
static void finishModeLine(EntryReader &entry, const ModeHead &head,
                           std::unique_ptr<VideoMode> mode) {
    settleExtraLines(entry);
    entry.dropExtraLines = !mode;
    if (!mode)
        return;
    mode->depth = head.depth;
    mode->refresh = head.refresh;
    mode->label = modeLabel(head, mode->flags);
    mode->name = modeName(head, entry.card.cardClass, mode->timingRef);
    appendRecord(entry.modes, mode.release());
}

static bool beginsWithNumber(std::string_view line) { return scanInt(line).has_value(); }

// A line that does not begin with a number is no concern of the modes. Of one that makes no mode
// although it does, the message tells the text: it says "file", but the line is what is at fault.
static void readModeLine(EntryReader &entry, std::string_view line) {
    std::string_view text = line;
    const auto head = scanHead(text);
    if (head && namesMonitorTiming(text)) {
        finishModeLine(entry, *head, findMonitorMode(line, entry.path));
        return;
    }
    auto mode = head ? parseFullTiming(text) : nullptr;
    if (head && !mode)
        mode = parseTimingWord(text, *head);
    if (mode)
        finishModeLine(entry, *head, std::move(mode));
    else if (beginsWithNumber(line))
        fatalError("Internal error, file %s\n", std::string(line).c_str());
}

static void readEntryLine(EntryReader &entry, std::string_view line) {
    if (line.starts_with('#'))
        return;
    if (line.starts_with(DISPLAY_NO_VIRTUAL))
        entry.card.flags |= CARD_NO_VIRTUAL;
    if (!entry.inModes)
        entry.inModes = line.starts_with(DISPLAY_MODES);
    else if (entry.dropExtraLines && line.starts_with(':'))
        return;
    else if (!collectExtraLine(line))
        readModeLine(entry, line);
}

std::uint32_t colorCount(int depth) {
    if (depth < 1 || depth > 32)
        return 0;
    return std::uint32_t{1} << (depth == 32 ? 24 : depth);
}

std::string displayConfigPath(std::string_view cardClass) {
    return std::string(DISPLAY_CONFIG_DIR).append(cardClass).append("/config");
}

ModeList readDisplayEntry(CardEntry &card) {
    EntryReader entry{card, displayConfigPath(card.cardClass), {}};
    auto reader = openLines(entry.path, DISPLAY_PIECE_MAX);
    if (!reader)
        fatalError("Can't open DisplayConfig entry %s\n", entry.path.c_str());
    std::string_view line;
    while (readLine(*reader, line))
        readEntryLine(entry, line);
    settleExtraLines(entry);
    clearExtraLines();
    return ModeList(std::exchange(entry.modes.head, nullptr));
}

std::vector<VideoMode *> selectedModes(const ModeList &modes, const std::vector<int> &selection) {
    const auto all = listRecords(modes.get());
    std::vector<VideoMode *> chosen;
    for (const int position : selection) {
        if (position < 1 || static_cast<std::size_t>(position) > all.size())
            break;
        chosen.push_back(all[position - 1]);
    }
    return chosen;
}
