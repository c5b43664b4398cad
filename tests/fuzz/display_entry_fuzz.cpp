// Display entries: each mode line judged by scanf as well; the modes written and read again.
#include <cmath>

#include "base/line_reader.h"
#include "base/lists.h"
#include "fuzz/fuzz.h"
#include "hwdb/display_entry.h"
#include "vdif/vdif_reader.h"

static CardEntry card = {nullptr, "Card", "class", {}, 0};

static ModeList readModes(std::string_view text) {
    writeFile(displayConfigPath(card.cardClass), text);
    const MemoryBound bound(text.size());
    ModeList modes = readDisplayEntry(card);
    bound.check();
    return modes;
}

static bool namesTiming(const std::string &line) {
    const auto open = line.find('"'), close = line.rfind('"');
    return open != close &&
           findTiming(*currentDescription, line.substr(open + 1, close - open - 1).substr(0, 127));
}

// The number of modes that a line of the modes section makes; -1: it ends the process.
static int modesOf(const std::string &line) {
    int number = 0;
    char text[2];
    const char *const from = line.c_str();
    if (line.starts_with('#') || line.starts_with(':') || std::sscanf(from, "%d", &number) != 1)
        return 0;
    if (std::sscanf(from, "%*d%*d%*d%*d%*d%*d%*d%*d%*d%*d%*d%*d%d", &number) == 1)
        return 1;
    if (std::sscanf(from, "%*d%*d%*d%*d \" %c", text) == 1)
        return namesTiming(line) ? 1 : 0;
    return std::sscanf(from, "%*d%*d%*d%*d%*d%1s", text) == 1 ? 1 : -1;
}

// The number of modes that the entry makes; -1 when a line of it ends the process: what was read
// before would be lost.
static int expectedModes(std::string_view input) {
    writeFile("entry", input);
    auto reader = openLines("entry", DISPLAY_PIECE_MAX);
    int count = 0;
    bool inModes = false;
    for (std::string_view line; readLine(*reader, line);) {
        const int modes = inModes ? modesOf(std::string(line)) : 0;
        if (modes < 0)
            return -1;
        count += modes;
        inModes = inModes || line.starts_with(DISPLAY_MODES);
    }
    return count;
}

static std::string numbersOf(const VideoMode &mode) {
    std::string text;
    for (const int value : {mode.hDisplay, mode.hSyncStart, mode.hSyncEnd, mode.hTotal,
                            mode.vDisplay, mode.vSyncStart, mode.vSyncEnd, mode.vTotal})
        text += " " + std::to_string(value);
    return text;
}

// The modes as an entry, by its first or its last form; none when a clock is not a whole number.
static std::optional<std::string> writeModes(const VideoMode *mode) {
    std::string text = "Modes\n";
    for (; mode; mode = mode->next) {
        if (mode->clock != std::trunc(mode->clock) || std::fabs(mode->clock) >= 0x1p31F)
            return std::nullopt;
        int width = 0, height = 0;
        std::sscanf(mode->name.c_str(), "%dx%d", &width, &height);
        for (const int value : {width, height, mode->depth, mode->refresh})
            text += std::to_string(value) + " ";
        text += std::to_string(static_cast<int>(mode->clock));
        text += mode->timingRef ? " " + *mode->timingRef : numbersOf(*mode);
        text += " " + std::to_string(mode->flags) + "\n";
        text += extraLinesOf(mode->extraLines);
    }
    return text;
}

// Everything but what the entry's lines say themselves.
static std::string shownModes(const VideoMode *mode) {
    std::string shown;
    for (; mode; mode = mode->next) {
        require(mode->label.size() <= 255 && mode->name.size() <= 255, "texts keep their limit");
        shown += mode->label + "|" + mode->name + "|" + numbersOf(*mode) + "\n";
    }
    return shown;
}

static void checkReread(const VideoMode *modes) {
    const auto written = writeModes(modes);
    if (!written)
        return;
    const ModeList again = readModes(*written);
    require(shownModes(again.get()) == shownModes(modes) && writeModes(again.get()) == written,
            "the modes that are written are read again");
}

void checkInput(std::string_view input) {
    static const auto *library = loadMonitorDescriptions(
        SCRCONF_SOURCE_DIR "/data/Korvel/MonitorConfig/timings.vda", nullptr);
    require(library, "the timing library is there");
    const int expected = expectedModes(input);
    if (expected < 0)
        return;
    const ModeList modes = readModes(input);
    require(listCount(modes.get()) == expected, "every mode line makes its mode");
    shownModes(modes.get());
    checkReread(modes.get());
}
