// Mutated inputs for every reader; the environment variable FUZZ_TARGET names the one. An input
// goes into a file below the current directory, which the reader reads. It must come to an end
// without an error that a sanitizer finds, within memory that is a small multiple of the input, and
// keep the target's own rule. Messages are formatted and dropped.
#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <regex>
#include <sanitizer/allocator_interface.h>
#include <utility>

#include "base/lasting_memory.h"
#include "base/lists.h"
#include "base/messages.h"
#include "base/paths.h"
#include "catalogue/mif_document.h"
#include "config/config_file.h"
#include "config/config_lines.h"
#include "config/config_writer.h"
#include "config/screen_config.h"
#include "edid/vdif_writer.h"
#include "hwdb/card_list.h"
#include "hwdb/display_entry.h"
#include "hwdb/extra_lines.h"
#include "hwdb/pointer_devices.h"
#include "support/edid.h"
#include "support/files.h"
#include "vdif/vdif_reader.h"

// A record is larger than the shortest line that makes one, so much at most.
static constexpr std::size_t MEMORY_PER_BYTE = 64;
static constexpr std::size_t MEMORY_ALWAYS = 32768; // bytes, whatever the input

static void require(bool held, const char *rule) {
    if (held)
        return;
    std::fprintf(stderr, "Broken: %s\n", rule);
    std::abort();
}

// All messages, so that the linker has no need of the program's.
struct FatalError {}; // where a target does not expect it, it is a fault

void showMessage(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
}

void fatalError(const char *, ...) { throw FatalError(); }
void systemError(const char *, ...) { throw FatalError(); }

static void readAs(const std::string &path, std::string_view text, const auto &read) {
    writeFile(path, text);
    const std::size_t before = __sanitizer_get_current_allocated_bytes();
    read();
    require(__sanitizer_get_current_allocated_bytes() <=
                before + MEMORY_ALWAYS + MEMORY_PER_BYTE * text.size(),
            "memory stays within a small multiple of the input");
}

// No card, a screen's own included, may be used any more.
static void forgetCards() {
    cardList = nullptr;
    lastingTexts.release();
    lastingRecords.release();
}

// Releases a list that the program keeps until it exits.
static void freeList(auto *&head) { FreeRecords()(std::exchange(head, nullptr)); }

static void checkCardList(std::string_view input) {
    readAs(CARD_LIST_PATH, input, loadCardList);
    require(std::ranges::is_sorted(listRecords(cardList), {}, &CardEntry::name),
            "cards are sorted");
    forgetCards();
}

static void checkPointerDevices(std::string_view input) {
    readAs(POINTER_LIST_PATH, input, loadPointerDevices);
    freeList(pointerDevices);
}

// A line that ends the process is no fault here.
static void checkDisplayEntry(std::string_view input) {
    CardEntry card = {nullptr, "Card", "class", {}, 0};
    ModeList modes;
    const auto read = [&] {
        try {
            modes = readDisplayEntry(card);
        } catch (const FatalError &) {
            clearExtraLines();
        }
    };
    readAs(displayConfigPath(card.cardClass), input, read);
    for (const VideoMode *mode = modes.get(); mode; mode = mode->next)
        require(mode->label.size() <= 255 && mode->name.size() <= 255, "texts keep their limit");
}

// The global region as a save writes what was read of the text.
static std::string rewriteSettings(std::string_view text) {
    freeList(configLines);
    readAs("Xconfig", text, [] { configLines = readConfigLines("Xconfig"); });
    std::string written;
    writeGlobalLines(written);
    return written;
}

static void checkConfigLines(std::string_view input) {
    static const std::regex withoutValue("[^\n]* \n"); // free for the next line of its keyword
    const std::string written = rewriteSettings(input);
    if (written.size() < CONFIG_PIECE_MAX) // no line of it is read in pieces
        require(std::regex_replace(rewriteSettings(written), withoutValue, "") ==
                    std::regex_replace(written, withoutValue, ""),
                "what is written is read again");
}

static void readScreens() {
    for (screenCount = 0; screenCount < SCREEN_MAX; screenCount++) {
        auto screen = parseScreenSection(CONFIG_PATH, screenCount);
        if (!screen)
            return;
        screens[static_cast<std::size_t>(screenCount)] = std::move(*screen);
    }
}

static void checkScreenConfig(std::string_view input) {
    configPath = CONFIG_PATH;
    readAs(configPath, input, readScreens);
    int sections = -1; // until the first one behind the last
    std::string copy;
    for (std::size_t before = copy.npos; before != copy.size(); sections++) {
        before = copy.size();
        copyScreenSection(sections + 1, CONFIG_PATH, copy);
    }
    const std::string_view global = input.substr(0, input.size() - copy.size());
    require(input.ends_with(copy) && !global.starts_with("Driver") &&
                global.find("\nDriver") == global.npos,
            "every section is copied byte for byte");
    if (sections == screenCount) { // a "Driver" without a blank divides the copy only
        freeList(configLines);
        openConfigFile();
        configLines = readConfigLines(configPlace());
        require(writeConfig().result == SaveResult::Saved, "the configuration is saved");
        require(readFile(configPath).ends_with("\n\n\n" + copy), "unchanged sections are kept");
    }
    for (ScreenConfig &screen : screens)
        screen.modes.reset();
    forgetCards();
}

static std::string updateDocument(std::string_view document) {
    readAs("document", document, [] { updateMifCatalogue("document", true); });
    forgetCards();
    return readFile("document");
}

static void checkMifDocument(std::string_view input) {
    // The name would end the table if it were written as it is.
    writeFile(CARD_LIST_PATH, "Class fast\nAcme <1> '>>>>'\n");
    writeFile(displayConfigPath("fast"), "# chipset <'\nModes\n640 480 4 60 25 vga\n");
    static const std::string body = updateDocument("");
    const std::string updated = updateDocument(input);
    const auto from = updated.find(body);
    require(from != updated.npos, "the document has the catalogue");
    require(input.ends_with(updated.substr(from + body.size())), "what is behind it stays");
    require(input.find("<TblBody") != input.npos || input.size() <= from,
            "nothing is lost of a document without a table body");
    require(updateDocument(updated) == updated, "the next update finds the same table body");
}

// Reads a monitor file beside the library, whose strings alone stay from one file to the next.
static void readMonitor(std::string_view text) {
    static const std::size_t libraryStrings = [] {
        loadMonitorDescriptions(TIMING_LIBRARY, nullptr);
        return stringPool.size();
    }();
    stringPool.resize(libraryStrings);
    stringPool.shrink_to_fit();
    readAs("monitor", text, [] { loadMonitorDescriptions(TIMING_LIBRARY, "monitor"); });
}

static void checkMonitorFile(std::string_view input) {
    readMonitor(input);
    const MonitorDescription &description = *currentDescription;
    for (std::size_t index = 0; index < timingCount(description); index++) {
        const std::string name(timingName(timingRecord(description, index)));
        const auto mode = findTimingByName(name);
        require(timingName(*findTiming(description, name)) == name && mode &&
                    mode->hTotal % 8 == 0 && mode->hDisplay % 8 == 0,
                "every timing is found and becomes a mode");
    }
}

// What is made of an EDID is a monitor file, or nothing.
static void checkImage(const EdidImage &image) {
    Edid edid;
    if (!decodeEdid(image, edid).empty())
        return;
    const std::string text = vdifText(edid);
    require(std::ranges::all_of(text, [](char c) { return c == '\n' || (c >= ' ' && c <= '~'); }),
            "the monitor file has printable characters only");
    readMonitor(text);
    require(text.empty() || timingCount(*currentDescription) > 0, "its timings are read");
}

// An EDID as it is, and with its header, version and checksums made right.
static void checkEdid(std::string_view input) {
    EdidImage image(input.begin(), input.end());
    checkImage(image);
    if (image.size() < EDID_BLOCK_SIZE)
        return;
    std::ranges::copy(EdidImage{0, 255, 255, 255, 255, 255, 255, 0}, image.begin());
    image[18] = 1;
    seal(image);
    checkImage(image);
}

static const std::map<std::string_view, void (*)(std::string_view input)> TARGETS = {
    {"card_list", checkCardList},         {"config_lines", checkConfigLines},
    {"display_entry", checkDisplayEntry}, {"edid_decoder", checkEdid},
    {"mif_document", checkMifDocument},   {"pointer_devices", checkPointerDevices},
    {"screen_config", checkScreenConfig}, {"vdif_reader", checkMonitorFile}};

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static const auto check = TARGETS.at(std::getenv("FUZZ_TARGET"));
    check({reinterpret_cast<const char *>(data), size});
    return 0;
}
