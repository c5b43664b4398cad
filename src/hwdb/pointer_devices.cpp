#include "hwdb/pointer_devices.h"

#include <array>
#include <string_view>

#include "base/line_reader.h"
#include "base/messages.h"
#include "base/paths.h"
#include "base/text_scanner.h"

static constexpr std::size_t POINTER_PIECE_MAX = 1023; // bytes of a line read at once
static constexpr std::string_view POINTER_MOUSE = "Mouse", POINTER_TOUCH_SCREEN = "TouchScreen",
                                  POINTER_NO_DEVICE = "NoDevice";

// A device file that entries refer to by a keyword.
struct DefaultDevice {
    std::string_view keyword;
    std::optional<std::string> device; // none before its line was read
};
using DefaultDevices = std::array<DefaultDevice, 3>;

PointerDevice *pointerDevices = nullptr;

static DefaultDevice *findDefault(DefaultDevices &defaults, std::string_view text) {
    for (DefaultDevice &entry : defaults)
        if (text.starts_with(entry.keyword))
            return &entry;
    return nullptr;
}

static std::optional<std::string> entryDevice(std::string_view word, DefaultDevices &defaults,
                                              std::string_view line) {
    if (word.starts_with(POINTER_NO_DEVICE))
        return std::nullopt;
    const DefaultDevice *entry = findDefault(defaults, word);
    if (!entry)
        return std::string(word);
    if (!entry->device)
        showMessage("No %s line before this entry in %s: %s\n", std::string(entry->keyword).c_str(),
                    POINTER_LIST_PATH, copyLine(line).c_str());
    return entry->device;
}

// A new record; null and a message for a line that lacks quotes or words.
static PointerDevice *parseEntry(std::string_view line, DefaultDevices &defaults) {
    const auto open = line.find('"'), close = line.rfind('"');
    std::string_view text = open == close ? "" : line.substr(close + 1);
    const auto type = scanWord(text);
    const auto buttons = type ? scanInt(text) : std::nullopt;
    const auto device = buttons ? scanWord(text) : std::nullopt;
    if (!device) {
        showMessage("Invalid pointer entry in %s: %s\n", POINTER_LIST_PATH, copyLine(line).c_str());
        return nullptr;
    }
    return new PointerDevice{nullptr, std::string(line.substr(open + 1, close - open - 1)),
                             std::string(*type), *buttons, entryDevice(*device, defaults, line)};
}

static void setDefault(DefaultDevice &entry, std::string_view line) {
    line.remove_prefix(entry.keyword.size());
    if (const auto word = scanWord(line))
        entry.device = *word;
}

static void readDatabase(LineReader &reader) {
    DefaultDevices defaults = {
        {{"DefaultSerial", {}}, {"DefaultKeyboard", {}}, {"DefaultBus", {}}}};
    PointerDevice **end = &pointerDevices;
    std::string_view line;
    while (readLine(reader, line)) {
        if (DefaultDevice *entry = findDefault(defaults, line)) {
            setDefault(*entry, line);
        } else if (line.starts_with(POINTER_MOUSE) || line.starts_with(POINTER_TOUCH_SCREEN)) {
            *end = parseEntry(line, defaults);
            if (*end)
                end = &(*end)->next;
        }
    }
}

void loadPointerDevices() {
    auto reader = openLines(POINTER_LIST_PATH, POINTER_PIECE_MAX);
    if (!reader)
        fatalError("Can't Open file %s\n", POINTER_LIST_PATH);
    readDatabase(*reader);
}
