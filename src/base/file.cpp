#include "base/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

namespace fs = std::filesystem;

static constexpr std::size_t FILE_READ_SIZE = 65536; // bytes read at once beyond the announced size

Descriptor::~Descriptor() {
    if (number >= 0)
        close(number);
}

// A path that ends in "/" names the folder itself.
std::optional<FilePlace> openPlace(const std::string &path) {
    const fs::path parent = fs::path(path).parent_path(), name = fs::path(path).filename();
    auto folder = std::make_shared<const Descriptor>(
        open(parent.empty() ? "." : parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (folder->number < 0)
        return std::nullopt;
    return FilePlace(path, name.empty() ? "." : name, std::move(folder));
}

FilePlace besidePlace(const FilePlace &place, std::string_view suffix) {
    FilePlace beside = place;
    beside.path += suffix;
    beside.name += suffix;
    return beside;
}

int folderNumber(const FilePlace &place) { return place.folder ? place.folder->number : AT_FDCWD; }

static FileState stateOf(const struct stat &status) {
    return {status.st_dev,
            status.st_ino,
            status.st_mode,
            status.st_size,
            {status.st_mtim.tv_sec, status.st_mtim.tv_nsec},
            {status.st_ctim.tv_sec, status.st_ctim.tv_nsec}};
}

static std::optional<FileState> stateAt(const FilePlace &place, int flags) {
    struct stat status = {};
    if (fstatat(folderNumber(place), place.name.c_str(), &status, flags) != 0)
        return std::nullopt;
    return stateOf(status);
}

std::optional<FileState> fileState(const FilePlace &place) { return stateAt(place, 0); }

std::optional<FileState> linkState(const FilePlace &place) {
    return stateAt(place, AT_SYMLINK_NOFOLLOW);
}

bool leadsTo(const FilePlace &place, int descriptor) {
    struct stat open = {};
    const auto standing = linkState(place);
    return standing && fstat(descriptor, &open) == 0 && open.st_dev == standing->device &&
           open.st_ino == standing->inode;
}

std::optional<FileState> fileState(std::FILE *file) {
    struct stat status = {};
    if (fstat(fileno(file), &status) != 0)
        return std::nullopt;
    return stateOf(status);
}

// What was opened is looked at, not the name: another file may have it by now. Until then no open
// waits, as that of a FIFO would, and none makes a terminal the run's own.
File openForReading(const FilePlace &place) {
    const int descriptor = openat(folderNumber(place), place.name.c_str(),
                                  O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    File file(descriptor < 0 ? nullptr : fdopen(descriptor, "r"));
    const auto state = file ? fileState(file.get()) : std::nullopt;
    if (!state)
        return nullptr;
    if (S_ISREG(state->mode) && (!place.expected || *place.expected == *state))
        return file;
    errno = S_ISREG(state->mode) ? ESTALE : S_ISDIR(state->mode) ? EISDIR : EINVAL;
    return nullptr;
}

// The announced size and a byte more are read at once; files of the kernel's announce too little.
std::optional<std::string> readWhole(std::FILE *file) {
    const auto state = fileState(file);
    std::rewind(file);
    std::string text(state ? static_cast<std::size_t>(state->size) + 1 : FILE_READ_SIZE, '\0');
    std::size_t length = 0;
    for (;;) {
        length += std::fread(text.data() + length, 1, text.size() - length, file);
        if (length < text.size())
            break;
        text.resize(length + FILE_READ_SIZE);
    }
    text.resize(length);
    return std::ferror(file) ? std::nullopt : std::optional(std::move(text));
}

File createFile(const FilePlace &place) {
    const int descriptor = openat(folderNumber(place), place.name.c_str(),
                                  O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    return File(descriptor < 0 ? nullptr : fdopen(descriptor, "w+"));
}

File createNewFile(const FilePlace &place) {
    removeFile(place);
    return createFile(place);
}

void removeFile(const FilePlace &place) {
    const int reason = errno;
    unlinkat(folderNumber(place), place.name.c_str(), 0);
    errno = reason;
}

bool flushWritten(std::FILE *file) {
    errno = EIO; // for an earlier write that failed, whose reason is gone by now
    return std::fflush(file) == 0 && !std::ferror(file);
}

bool closeWritten(File file) {
    const bool written = flushWritten(file.get());
    const int reason = errno;
    if (std::fclose(file.release()) != 0)
        return false;
    errno = reason;
    return written;
}
