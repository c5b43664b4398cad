// Writing the new server configuration and putting it in place of the old one.
//
// The new file holds the keyword slots that are not absent, in table order, then the screen
// sections in screen order: a section as it stands in the old file, or, for a screen that was
// configured in this run, one made from its card's display entry and the chosen modes.
//
// Errors end the process and each names its file. The old file is left as it was, but for the one
// message that says that the new one is in place.
#pragma once

#include <cstdio>
#include <string>

#include "config/screen_config.h"

enum class SaveResult {
    Saved,
    Busy,    // nothing was written: another process holds the lock
    Changed, // nothing was written: the file at configPath is not as configState tells
};

// Writes the new configuration to CONFIG_TEMP_PATH and replaces the file at configPath by it. An
// exclusive flock on the directory of CONFIG_TEMP_PATH keeps other saves away meanwhile.
// The caller sees to it that every changed screen has a selected mode.
SaveResult writeConfig();

// Writes the keyword slots, with the pointer lines made from currentPointer, and three line ends.
void writeGlobalLines(std::FILE *out);

// Copies the text of one section byte for byte; `index` counts from 0 the lines that begin with
// "Driver".
void copyScreenSection(int index, const std::string &source, std::FILE *out);

// Writes the section of a screen that was configured in this run and has a selected mode.
void writeScreenSection(std::FILE *out, const ScreenConfig &screen);
