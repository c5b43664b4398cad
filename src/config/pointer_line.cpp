#include "config/pointer_line.h"

#include <memory>

#include "base/number_text.h"
#include "base/text_scanner.h"
#include "config/config_lines.h"

static constexpr std::string_view POINTER_KEYWORD = "Mouse";

PointerDevice *currentPointer = nullptr;
bool pointerChosen = false;

static std::unique_ptr<PointerDevice> configuredPointer; // what the configuration says

// The first slot of the pointer, or the first that is active; null when none is.
static ConfigLine *findPointerSlot(bool active) {
    ConfigLine *line = configLines;
    while (line &&
           (line->keyword != POINTER_KEYWORD || (active && line->state != LineState::Active)))
        line = line->next;
    return line;
}

// The device of a "Mouse" line's value; null when the value holds no word.
static std::unique_ptr<PointerDevice> parseConfigured(std::string_view value) {
    const auto type = scanWord(value);
    if (!type)
        return nullptr;
    auto pointer = std::make_unique<PointerDevice>();
    pointer->type = *type;
    pointer->device = scanWord(value);
    return pointer;
}

static void completePointer(PointerDevice &pointer) {
    for (const PointerDevice *entry = pointerDevices; entry; entry = entry->next) {
        if (entry->type != pointer.type)
            continue;
        if (pointer.buttons == 0)
            pointer.buttons = entry->buttons;
        pointer.name = entry->name;
    }
}

void setUpPointer() {
    const ConfigLine *line = findPointerSlot(true);
    configuredPointer = line ? parseConfigured(line->value.value_or("")) : nullptr;
    currentPointer = configuredPointer.get();
    if (currentPointer)
        completePointer(*currentPointer);
}

void choosePointer(PointerDevice &device) {
    currentPointer = &device;
    pointerChosen = true;
    if (!findPointerSlot(true))
        findPointerSlot(false)->state = LineState::Active;
}

void writePointerLines(std::string &out, const PointerDevice &pointer) {
    out.append(POINTER_KEYWORD).append(" ").append(pointer.type);
    if (pointer.device)
        out.append(" ").append(*pointer.device);
    out += '\n';
    if (pointer.buttons > 0)
        out.append("Buttons ").append(std::to_string(pointer.buttons)) += '\n';
}
