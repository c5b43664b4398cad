// The pointer device database: read, written by its rules and read again.
#include "base/paths.h"
#include "fuzz/fuzz.h"
#include "hwdb/pointer_devices.h"

static constexpr std::size_t PIECE_MAX = 1023; // bytes

static std::string writeDevices() {
    std::string text;
    for (const PointerDevice *device = pointerDevices; device; device = device->next) {
        if (device->device)
            text += "DefaultBus " + *device->device + "\n";
        text += "Mouse \"" + device->name + "\" " + device->type + " " +
                std::to_string(device->buttons) +
                (device->device ? " DefaultBus\n" : " NoDevice\n");
    }
    return text;
}

static void readDevices(std::string_view text) {
    freeList(pointerDevices);
    writeFile(POINTER_LIST_PATH, text);
    const MemoryBound bound(text.size());
    loadPointerDevices();
    bound.check();
}

void checkInput(std::string_view input) {
    readDevices(input);
    const std::string written = writeDevices();
    if (linesFit(written, PIECE_MAX)) {
        readDevices(written);
        require(writeDevices() == written, "the devices that are written are read again");
    }
    freeList(pointerDevices);
}
