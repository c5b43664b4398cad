// The file in which a new configuration is gathered, CONFIG_TEMP_PATH. It is root's alone for as
// long as it has its name, so it serves as the lock as well: one save at a time.
#pragma once

#include <optional>

#include "base/file.h"

struct TemporaryFile {
    FilePlace place;
    File file; // null: another save holds it
};

// Creates the file and locks it until it is closed. The rest of an interrupted save, which nobody
// holds, and whatever else has the name are removed. On a file system that has no locks the file is
// made without one. None, with the reason in errno, when the file cannot be created.
std::optional<TemporaryFile> createTemporaryFile();

// Removes the file, and with it the lock.
void removeTemporaryFile(TemporaryFile &temporary);
