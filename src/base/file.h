// Files that close themselves, and the ways in which they are opened and finished.
#pragma once

#include <sys/types.h>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct CloseFile {
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

struct Descriptor {
    const int number; // negative: could not be opened
    explicit Descriptor(int opened) : number(opened) {}
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor();
};

// What tells a file from an earlier state of it.
struct FileState {
    dev_t device;
    ino_t inode;
    off_t size;       // bytes
    time_t seconds;   // of the last modification, since the epoch
    long nanoseconds; // of the same
    bool operator==(const FileState &) const = default;
};

// The present state of the file that the path leads to; none when there is no such file.
std::optional<FileState> fileState(const std::string &path);

// Opens a regular file for reading. Empty, with the reason in errno, when it cannot be opened or is
// no regular file: a FIFO would block the run and a directory has no lines.
File openForReading(const std::string &path);

// Creates a file for writing, for its owner alone. What stood at `path`, say the rest of an
// interrupted run, is removed and not written into: it may be a second name of another file. Empty,
// with the reason in errno, when that fails.
File createNewFile(const std::string &path);

// Writes a text as it is, NUL bytes included. Whether all of it was written shows at the close.
inline void writeText(std::FILE *out, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), out);
}

// Writes out what is buffered and closes the file. False, with the reason in errno, when something
// that was written to it is lost.
bool closeWritten(File file);
