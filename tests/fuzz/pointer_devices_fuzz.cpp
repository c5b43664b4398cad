// The pointer device database: read, written by its rules and read again; each device made the
// configuration's, saved and found again.
#include "config/config_lines.h"
#include "config/config_writer.h"
#include "frame/paths.h"
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

static void readConfiguration(std::string_view text) {
    writeFile("Xconfig", text);
    freeList(configLines);
    configLines = readConfigLines("Xconfig");
}

static void readDevices(std::string_view text) {
    freeList(pointerDevices);
    writeFile(POINTER_LIST_PATH, text);
    const MemoryBound bound(text.size());
    loadPointerDevices();
    bound.check();
}

// The database's last device, chosen in the menu, is written and read as the configuration's.
static void checkLastDevice(std::string_view database) {
    PointerDevice last;
    for (const PointerDevice *device = pointerDevices; device; device = device->next)
        last = *device;
    PointerDevice *const usual = std::exchange(currentPointer, &last);
    const std::string written = textOf(writeGlobalLines);
    currentPointer = usual;
    if (last.type.empty() || !linesFit(written, PIECE_MAX))
        return;
    readConfiguration(written);
    readDevices(database);
    require(currentPointer && currentPointer->type == last.type &&
                currentPointer->device == last.device && currentPointer->name == last.name,
            "the device that is saved is the current one again");
}

void checkInput(std::string_view input) {
    readConfiguration("Mouse x\n");
    readDevices(input);
    const std::string written = writeDevices();
    if (linesFit(written, PIECE_MAX)) {
        readDevices(written);
        require(writeDevices() == written, "the devices that are written are read again");
    }
    checkLastDevice(written);
    freeList(pointerDevices);
}
