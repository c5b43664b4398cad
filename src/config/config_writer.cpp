#include "config/config_writer.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>

#include "base/file.h"
#include "base/line_reader.h"
#include "base/messages.h"
#include "base/number_text.h"
#include "base/paths.h"
#include "base/replace_file.h"
#include "config/config_file.h"
#include "config/config_lines.h"
#include "config/dropped_lines.h"
#include "config/pointer_line.h"
#include "config/temporary_file.h"

// What a section begins with when it is copied: any such line goes with its own section, also the
// ones that are not read as one, as they have no blank.
static constexpr std::string_view WRITER_SECTION_START = "Driver";

static constexpr int WRITER_PACKED_DEPTH = 24; // bits per pixel that the server must be told of

// The words of a mode line, in the order in which they are written.
struct FlagWord {
    std::uint32_t flag;
    std::string_view word;
};
static constexpr std::array<FlagWord, 8> WRITER_FLAG_WORDS = {{
    {MODE_INTERLACE, "Interlace "},
    {MODE_NHSYNC, "NHsync "},
    {MODE_PHSYNC, "PHsync "},
    {MODE_NVSYNC, "NVsync "},
    {MODE_PVSYNC, "PVsync "},
    {MODE_DOUBLE_SCAN, "DoubleScan "},
    {MODE_COMPOSITE_SYNC, "CompositeSync "},
    {MODE_SYNC_ON_GREEN, "SyncOnGreen "},
}};

static void writeSlot(std::string &out, const ConfigLine &line) {
    if (line.state == LineState::Commented)
        out += "# ";
    out.append(line.keyword).append(" ").append(line.value.value_or("")) += '\n';
}

// Copies the template of the screen section, which ends where the modes of the entry begin.
static void copyTemplate(std::string &out, const CardEntry &card) {
    const std::string path = displayConfigPath(card.cardClass);
    auto reader = openLines(path, DISPLAY_PIECE_MAX);
    if (!reader)
        fatalError("Can't open DisplayConfig entry %s\n", path.c_str());
    std::string_view piece;
    while (readPiece(*reader, piece) && !piece.starts_with(DISPLAY_MODES)) {
        if (piece.starts_with(CONFIG_SECTION_START))
            out.append("\n\n").append(piece).append("Card ").append(card.name) += '\n';
        else
            out += piece;
    }
}

// A clock in MHz with one decimal, as printf rounds it.
static void appendClock(std::string &out, float clock) {
    std::array<char, 64> text; // the largest float has 39 digits before the point
    out.append(text.data(), static_cast<std::size_t>(std::snprintf(
                                text.data(), text.size(), "%1.1f ", static_cast<double>(clock))));
}

static void writeModeLine(std::string &out, const VideoMode &mode) {
    out.append("\"").append(mode.name).append("\" ");
    appendClock(out, mode.clock);
    for (const int timing : {mode.hDisplay, mode.hSyncStart, mode.hSyncEnd, mode.hTotal,
                             mode.vDisplay, mode.vSyncStart, mode.vSyncEnd, mode.vTotal}) {
        appendNumber(out, mode.timingRef ? 0 : timing, 0);
        out += ' ';
    }
    for (const FlagWord &entry : WRITER_FLAG_WORDS)
        if (mode.flags & entry.flag)
            out += entry.word;
    out += '\n';
}

// The whole new configuration.
static std::string makeConfig() {
    std::string text;
    writeGlobalLines(text);
    for (int index = 0; index < screenCount; index++) {
        const ScreenConfig &screen = screens[index];
        if (screen.unchanged)
            copyScreenSection(index, sectionSource(), text);
        else
            writeScreenSection(text, screen);
    }
    return text;
}

// The text of the old configuration; a file that cannot be read on ends the process.
static std::string readConfig(std::FILE *file) {
    auto text = readWhole(file);
    if (!text)
        fatalError("Cannot read %s\n", configPath.c_str());
    return std::move(*text);
}

int countUnchangedDrops() {
    const File old = templateUsed ? nullptr : openForReading(configPlace());
    return old ? countDroppedLines(readConfig(old.get()), makeConfig()) : 0;
}

// Writes the new configuration where it stays when it cannot be installed.
static void writeTemporary(std::FILE *file, std::string_view text) {
    writeText(file, text);
    if (!flushWritten(file))
        fatalError("Cannot write new Xconfig %s: %s\n", CONFIG_TEMP_PATH, std::strerror(errno));
}

// Keeps the old configuration when the new one does not say all that it says. A link that is
// replaced leaves its target as it was.
static void keepOldConfig(SaveReport &report, std::FILE *old, std::string_view newText) {
    if (!configState)
        return;
    report.oldRead = old && !templateUsed;
    if (report.oldRead)
        report.dropped = countDroppedLines(withoutReplacedLines(readConfig(old)), newText);
    if (configIsLink() || (report.oldRead && report.dropped == 0))
        return;
    report.kept = keepFile(configPlace(), old);
    if (!report.kept)
        fatalError("Cannot keep the old Xconfig %s: %s\n", configPath.c_str(),
                   std::strerror(errno));
}

// The temporary file stays where the new configuration cannot be installed.
static void installConfig(const SaveReport &report, std::FILE *old, std::string_view text,
                          TemporaryFile &temporary) {
    const FilePlace newPlace = besidePlace(configPlace(), REPLACE_SUFFIX);
    Replaced replaced = Replaced::No;
    if (File file = createNewFile(newPlace)) {
        writeText(file.get(), text);
        replaced = replaceFile(std::move(file), newPlace, configPlace(), old);
    }
    if (replaced == Replaced::No) {
        if (report.kept)
            removeFile(*report.kept);
        fatalError("Cannot install new Xconfig %s: %s\n", configPath.c_str(), std::strerror(errno));
    }
    const int reason = errno;
    removeTemporaryFile(temporary);
    if (replaced == Replaced::Unsynced)
        fatalError("New Xconfig %s is in place, but not synced to disk: %s\n", configPath.c_str(),
                   std::strerror(reason));
}

static SaveReport saveInto(TemporaryFile &temporary) {
    SaveReport report;
    const File old = openForReading(configPlace());
    const bool oldMissing = configState && !templateUsed && !old;
    if (!configChanged() && !oldMissing) {
        const std::string text = makeConfig();
        writeTemporary(temporary.file.get(), text);
        if (!configChanged()) { // while its sections were copied
            keepOldConfig(report, old.get(), text);
            installConfig(report, old.get(), text, temporary);
            report.result = SaveResult::Saved;
            return report;
        }
    }
    removeTemporaryFile(temporary);
    report.result = SaveResult::Changed;
    return report;
}

static bool isConfig(const std::optional<FileState> &state) {
    return state && configState && state->device == configState->device &&
           state->inode == configState->inode;
}

SaveReport writeConfig() {
    if (configChanged())
        return {SaveResult::Changed};
    const bool restIsConfig = isConfig(linkState(CONFIG_TEMP_PATH));
    auto temporary = createTemporaryFile();
    if (!temporary)
        fatalError("Cannot open new Xconfig %s\n", CONFIG_TEMP_PATH);
    if (!temporary->file)
        return {SaveResult::Busy};
    if (restIsConfig)
        acceptChangeTime(); // it has lost this second name, the rest of a save
    return saveInto(*temporary);
}

void writeGlobalLines(std::string &out) {
    for (const ConfigLine *line = configLines; line; line = line->next) {
        if (line->keyword == "Mouse" && line->state == LineState::Active && currentPointer)
            writePointerLines(out, *currentPointer);
        else if (line->keyword != "Buttons" && line->state != LineState::Absent)
            writeSlot(out, *line);
    }
    out += "\n\n\n";
}

void copyScreenSection(int index, const FilePlace &source, std::string &out) {
    auto reader = openLines(source, CONFIG_PIECE_MAX);
    if (!reader)
        fatalError("failed to open file %s\n", source.path.c_str());
    int number = -1; // of the section that is being read
    std::string_view piece;
    while (number <= index && readPiece(*reader, piece)) {
        if (piece.starts_with(WRITER_SECTION_START))
            number++;
        if (number == index)
            out += piece;
    }
}

void writeScreenSection(std::string &out, const ScreenConfig &screen) {
    const auto modes = selectedModes(screen.modes, screen.selection);
    copyTemplate(out, *screen.card);
    out.append(screen.card->extraLines).append(modes.front()->extraLines);
    const auto number = [](int value) { return std::to_string(value); };
    out += "Virtual " + number(screen.virtualWidth) + " " + number(screen.virtualHeight) + "\n";
    out += "Depth " + number(screen.depth) + "\n\n";
    if (screen.depth == WRITER_PACKED_DEPTH)
        out += "BitsPerPixel 24\n\n";
    out += "Modes \n";
    for (const VideoMode *mode : modes)
        writeModeLine(out, *mode);
    out += "\n\n";
}
