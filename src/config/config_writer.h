// Writing the new server configuration and putting it in place of the old one.
//
// The new file holds the keyword slots that are not absent, in table order, then the screen
// sections in screen order: a section as it stands in the old file, or, for a screen that was
// configured in this run, one made from its card's display entry and the chosen modes.
//
// Errors end the process and each names its file. The old file is left as it was, but for the one
// message that says that the new one is in place.
#pragma once

#include <optional>
#include <string>

#include "base/file.h"
#include "config/screen_config.h"

enum class SaveResult {
    Saved,
    Busy,    // nothing was written: another save is running
    Changed, // nothing was written: the configuration is not as it was read
};

struct SaveReport {
    SaveResult result = SaveResult::Saved;
    bool oldRead = false;                         // there was a configuration and it could be read
    int dropped = 0;                              // lines of it that the new one does not have
    std::optional<FilePlace> kept = std::nullopt; // where the old one is kept; none: nowhere
};

// Writes the new configuration to CONFIG_TEMP_PATH and puts a copy in the place of the old one,
// which keeps its attributes. The temporary file is the lock against other saves meanwhile. When
// lines of the old one are dropped that no choice of this run replaces, or it could not be read, it
// is kept beside the new one as keepFile does; not where a link is replaced.
// The caller sees to it that every changed screen has a selected mode.
SaveReport writeConfig();

// The lines of the configuration that a save without any choice would drop; 0 without one.
int countUnchangedDrops();

// Writes the keyword slots, with the pointer lines made from currentPointer, and three line ends.
void writeGlobalLines(std::string &out);

// Copies the text of one section byte for byte; `index` counts from 0 the lines that begin with
// "Driver".
void copyScreenSection(int index, const FilePlace &source, std::string &out);

// Writes the section of a screen that was configured in this run, at least one mode selected.
void writeScreenSection(std::string &out, const ScreenConfig &screen);
