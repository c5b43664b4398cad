#include "base/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

Descriptor::~Descriptor() {
    if (number >= 0)
        close(number);
}

std::optional<FileState> fileState(const std::string &path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        return std::nullopt;
    return FileState{status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec,
                     status.st_mtim.tv_nsec};
}

File openForReading(const std::string &path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        return nullptr;
    if (!S_ISREG(status.st_mode)) {
        errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
        return nullptr;
    }
    return File(std::fopen(path.c_str(), "re"));
}

File createNewFile(const std::string &path) {
    unlink(path.c_str());
    const int descriptor =
        open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    return File(descriptor < 0 ? nullptr : fdopen(descriptor, "w"));
}

bool closeWritten(File file) {
    errno = EIO; // for an earlier write that failed, whose reason is gone by now
    const bool written = std::fflush(file.get()) == 0 && !std::ferror(file.get());
    const int reason = errno;
    if (std::fclose(file.release()) != 0)
        return false;
    errno = reason;
    return written;
}
