// Which file is the configuration: where it lies, what stands in for it, and whether it is still as
// it was when it was read.
#pragma once

#include <optional>
#include <string>

#include "base/file.h"

extern std::string configPath; // read now and replaced at the save; empty: none was found yet
extern std::optional<FileState> configState; // of the file before it was read; none: no file
extern bool templateUsed;                    // the template was read, as no configuration could be

// The first of the files ".Xconfig" in the directory HOME and CONFIG_PATH that exists; none when
// neither does. HOME is passed over when it is unset or gives a path of more than 255 bytes.
std::optional<std::string> locateConfigFile();

// Settles which file is configured: configPath or, while that is empty, what locateConfigFile finds
// or else CONFIG_PATH. Its folder is held from now on and its state noted. A file that must not be
// replaced ends the process, and so does a folder that cannot be entered: no save could succeed.
void openConfigFile();

// The configuration by its name in the folder that openConfigFile holds. Only the file that was
// found then, unchanged, can be opened by it.
const FilePlace &configPlace();

// Where the text of the sections stands that were not configured in this run.
FilePlace sectionSource();

// True when the configuration is not as openConfigFile found it.
bool configChanged();

// Takes the change time as it is now for that of an unchanged file: for a caller who has removed
// another name of it.
void acceptChangeTime();

// True when the configuration is a link, which a save replaces and whose target it leaves alone.
bool configIsLink();
