// Files that close themselves, the places where they lie, and the ways in which they are opened and
// finished.
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

// A moment of a file's life.
struct FileTime {
    time_t seconds; // since the epoch
    long nanoseconds;
    bool operator==(const FileTime &) const = default;
};

// What tells a file from an earlier state of it.
struct FileState {
    dev_t device;
    ino_t inode;
    mode_t mode;       // type and permission bits
    off_t size;        // bytes
    FileTime modified; // its contents; can be set back
    FileTime changed;  // its contents or attributes; cannot be set
    bool operator==(const FileState &) const = default;
};

// Where a file lies: a name in a folder. A folder that is held is the same one for as long as the
// record lives, whatever others rename or put in its place meanwhile.
struct FilePlace {
    std::string path;                                    // for messages
    std::string name;                                    // in the folder
    std::shared_ptr<const Descriptor> folder;            // null: not held, `name` is the path
    std::shared_ptr<const FileState> expected = nullptr; // of the only file that is meant

    // The place that the path leads to each time it is used.
    FilePlace(std::string usedPath) : path(std::move(usedPath)), name(path) {}
    FilePlace(const char *usedPath) : FilePlace(std::string(usedPath)) {}
    FilePlace(std::string shownPath, std::string lastName, std::shared_ptr<const Descriptor> held)
        : path(std::move(shownPath)), name(std::move(lastName)), folder(std::move(held)) {}
};

// The place of the path, its folder held from now on. None, with the reason in errno, when the
// folder cannot be entered.
std::optional<FilePlace> openPlace(const std::string &path);

// The place beside another whose name has `suffix` behind it.
FilePlace besidePlace(const FilePlace &place, std::string_view suffix);

// The folder of a place as the system calls take it.
int folderNumber(const FilePlace &place);

// The present state of the file at a place, through links; none, with the reason in errno, when it
// cannot be told.
std::optional<FileState> fileState(const FilePlace &place);

// The same of the place itself, which may be a link.
std::optional<FileState> linkState(const FilePlace &place);

// The state of an open file.
std::optional<FileState> fileState(std::FILE *file);

// True when the place leads to the open file and not, by now, to another.
bool leadsTo(const FilePlace &place, int descriptor);

// Opens a regular file for reading. Empty, with the reason in errno, when it cannot be opened or is
// no regular file: a FIFO would block the run and a directory has no lines. ESTALE: it is not the
// file, or not as it was, that the place expects.
File openForReading(const FilePlace &place);

// All that an open file holds, from its start. None, with the reason in errno, when it cannot be
// read.
std::optional<std::string> readWhole(std::FILE *file);

// Creates a file for writing, and for reading what was written, for its owner alone. Empty, with
// the reason in errno, when that fails, as where something has the name.
File createFile(const FilePlace &place);

// As createFile. What stood there, say the rest of an interrupted run, is removed and not written
// into: it may be a second name of another file.
File createNewFile(const FilePlace &place);

// Removes what has the name; errno stays as it is.
void removeFile(const FilePlace &place);

// Writes a text as it is, NUL bytes included. Whether all of it was written shows at the end.
inline void writeText(std::FILE *out, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), out);
}

// Writes out what is buffered. False, with the reason in errno, when something that was written to
// the file is lost.
bool flushWritten(std::FILE *file);

// As flushWritten, and closes the file.
bool closeWritten(File file);
