// Files that close themselves.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

struct CloseFile {
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// Opens a regular file for reading. Empty when it cannot be opened or is no regular file: a FIFO
// would block the run and a directory has no lines.
File openForReading(const std::string &path);
