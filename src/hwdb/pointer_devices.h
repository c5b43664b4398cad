// Pointer device database: the mice and touch screens that the server drives.
//
// File format (POINTER_LIST_PATH), one line each; every other line is a comment:
//     DefaultSerial <device file>          and likewise DefaultKeyboard and DefaultBus
//     Mouse "<name>" <type> <buttons> <device>             or TouchScreen in place of Mouse
// <device> is a device file, NoDevice, or DefaultSerial, DefaultKeyboard or DefaultBus for the file
// that such a line gave before.
//
// Errors: a file that cannot be opened ends the process; a malformed entry is reported and skipped;
// a default that no line gave before is reported and the entry has no device file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

struct PointerDevice {
    PointerDevice *next = nullptr;
    std::string name;                  // text between the quotes, shown in the menu
    std::string type;                  // word behind "Mouse" in the configuration
    std::int32_t buttons = 0;          // 0: not known
    std::optional<std::string> device; // device file; none: the device needs none
};

extern PointerDevice *pointerDevices; // in file order

// Reads the database into pointerDevices. Called once.
void loadPointerDevices();
