#include "config/config_writer.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <utility>

#include "base/file.h"
#include "base/line_reader.h"
#include "base/messages.h"
#include "base/paths.h"
#include "base/replace_file.h"
#include "config/config_lines.h"
#include "hwdb/pointer_devices.h"

namespace fs = std::filesystem;

static constexpr std::string_view WRITER_SECTION_START = "Driver";
static constexpr int WRITER_PACKED_DEPTH = 24; // bits per pixel that the server must be told of

// The words of a mode line, in the order in which they are written.
struct FlagWord {
    std::uint32_t flag;
    const char *word;
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

static void writePointerLines(std::FILE *out, const PointerDevice &pointer) {
    std::fprintf(out, "Mouse %s", pointer.type.c_str());
    if (pointer.device)
        std::fprintf(out, " %s", pointer.device->c_str());
    std::fprintf(out, "\n");
    if (pointer.buttons > 0)
        std::fprintf(out, "Buttons %d\n", pointer.buttons);
}

static void writeSlot(std::FILE *out, const ConfigLine &line) {
    if (line.state == LineState::Commented)
        writeText(out, "# ");
    writeText(out, line.keyword);
    writeText(out, " ");
    writeText(out, line.value.value_or(""));
    writeText(out, "\n");
}

// Copies the template of the screen section, which ends where the modes of the entry begin.
static void copyTemplate(std::FILE *out, const CardEntry &card) {
    const std::string path = displayConfigPath(card.cardClass);
    auto reader = openLines(path, DISPLAY_PIECE_MAX);
    if (!reader)
        fatalError("Can't open DisplayConfig entry %s\n", path.c_str());
    std::string_view piece;
    while (readPiece(*reader, piece) && !piece.starts_with(DISPLAY_MODES)) {
        if (!piece.starts_with(CONFIG_SECTION_START)) {
            writeText(out, piece);
            continue;
        }
        writeText(out, "\n\n");
        writeText(out, piece);
        writeText(out, "Card ");
        writeText(out, card.name);
        writeText(out, "\n");
    }
}

static void writeModeLine(std::FILE *out, const VideoMode &mode) {
    std::fprintf(out, "\"%s\" %1.1f ", mode.name.c_str(), static_cast<double>(mode.clock));
    if (mode.timingRef)
        std::fprintf(out, "0 0 0 0 0 0 0 0 ");
    else
        std::fprintf(out, "%d %d %d %d %d %d %d %d ", mode.hDisplay, mode.hSyncStart, mode.hSyncEnd,
                     mode.hTotal, mode.vDisplay, mode.vSyncStart, mode.vSyncEnd, mode.vTotal);
    for (const FlagWord &entry : WRITER_FLAG_WORDS)
        std::fprintf(out, "%s", mode.flags & entry.flag ? entry.word : "");
    std::fprintf(out, "\n");
}

// Another save would write into the same temporary file; the lock ends with the process at the
// latest. False when another process holds it.
static bool lockDirectory(const Descriptor &directory) {
    if (directory.number < 0)
        fatalError("Cannot open new Xconfig %s\n", CONFIG_TEMP_PATH);
    if (flock(directory.number, LOCK_EX | LOCK_NB) == 0)
        return true;
    if (errno != EWOULDBLOCK)
        fatalError("Cannot lock the directory of %s\n", CONFIG_TEMP_PATH);
    return false;
}

static void writeNewConfig() {
    File out = createNewFile(CONFIG_TEMP_PATH);
    if (!out)
        fatalError("Cannot open new Xconfig %s\n", CONFIG_TEMP_PATH);
    const std::string source = templateUsed ? TEMPLATE_PATH : configPath;
    writeGlobalLines(out.get());
    for (int index = 0; index < screenCount; index++) {
        const ScreenConfig &screen = screens[index];
        if (screen.unchanged)
            copyScreenSection(index, source, out.get());
        else
            writeScreenSection(out.get(), screen);
    }
    if (!closeWritten(std::move(out)))
        fatalError("Cannot write new Xconfig %s: %s\n", CONFIG_TEMP_PATH, std::strerror(errno));
}

static bool configurationChanged() { return fileState(configPath) != configState; }

SaveResult writeConfig() {
    const fs::path folder = fs::path(CONFIG_TEMP_PATH).parent_path();
    const Descriptor directory(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!lockDirectory(directory))
        return SaveResult::Busy;
    if (configurationChanged())
        return SaveResult::Changed;
    writeNewConfig();
    if (configurationChanged()) { // while its sections were copied
        unlink(CONFIG_TEMP_PATH);
        return SaveResult::Changed;
    }
    const Replaced replaced = replaceFile(CONFIG_TEMP_PATH, configPath);
    if (replaced == Replaced::No)
        fatalError("Cannot install new Xconfig %s: %s\n", configPath.c_str(), std::strerror(errno));
    if (replaced == Replaced::Unsynced)
        fatalError("New Xconfig %s is in place, but not synced to disk: %s\n", configPath.c_str(),
                   std::strerror(errno));
    return SaveResult::Saved;
}

void writeGlobalLines(std::FILE *out) {
    for (const ConfigLine *line = configLines; line; line = line->next) {
        if (line->keyword == "Mouse" && line->state == LineState::Active && currentPointer)
            writePointerLines(out, *currentPointer);
        else if (line->keyword != "Buttons" && line->state != LineState::Absent)
            writeSlot(out, *line);
    }
    writeText(out, "\n\n\n");
}

void copyScreenSection(int index, const std::string &source, std::FILE *out) {
    auto reader = openLines(source, CONFIG_PIECE_MAX);
    if (!reader)
        fatalError("failed to open file %s\n", source.c_str());
    int number = -1; // of the section that is being read
    std::string_view piece;
    while (number <= index && readPiece(*reader, piece)) {
        if (piece.starts_with(WRITER_SECTION_START))
            number++;
        if (number == index)
            writeText(out, piece);
    }
}

void writeScreenSection(std::FILE *out, const ScreenConfig &screen) {
    const auto modes = selectedModes(screen.modes, screen.selection);
    copyTemplate(out, *screen.card);
    writeText(out, screen.card->extraLines);
    writeText(out, modes.front()->extraLines);
    std::fprintf(out, "Virtual %d %d\n", screen.virtualWidth, screen.virtualHeight);
    std::fprintf(out, "Depth %d\n\n", screen.depth);
    if (screen.depth == WRITER_PACKED_DEPTH)
        std::fprintf(out, "BitsPerPixel 24\n\n");
    std::fprintf(out, "Modes \n");
    for (const VideoMode *mode : modes)
        writeModeLine(out, *mode);
    std::fprintf(out, "\n\n");
}
