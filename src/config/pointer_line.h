// What the "Mouse" lines of the configuration make of the pointer device database: the device that
// is configured, and the lines that are written of it.
#pragma once

#include <string>

#include "hwdb/pointer_devices.h"

extern PointerDevice *currentPointer; // null: the configuration has none
extern bool pointerChosen;            // currentPointer was chosen in this run

// Sets currentPointer from the first active "Mouse" line of configLines. The database gives the
// button count, that of the first entry of the type that knows it, and the name, that of the last
// entry. Called once, after both were read.
void setUpPointer();

// Makes an entry of the database the current pointer. Where no "Mouse" line is active the first one
// becomes so, or the choice would not be written.
void choosePointer(PointerDevice &device);

// Adds the "Mouse" line of the device and, when its count is known, the "Buttons" line.
void writePointerLines(std::string &out, const PointerDevice &pointer);
