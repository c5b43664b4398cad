#include "base/replace_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <tuple>

#include "base/file.h"

namespace fs = std::filesystem;

static constexpr mode_t REPLACE_NEW_MODE = 0644;
static constexpr mode_t REPLACE_MODE_BITS = 07777;
static constexpr const char *REPLACE_COPY_SUFFIX = ".scrconf";

// Gives the new file the owner and permission bits that the file at `path` is to have. Who may not
// give files away becomes the owner.
static bool takeOverAttributes(int descriptor, const std::string &path) {
    struct stat old = {};
    if (lstat(path.c_str(), &old) != 0)
        return errno == ENOENT && fchmod(descriptor, REPLACE_NEW_MODE) == 0;
    if (S_ISLNK(old.st_mode))
        return fchmod(descriptor, REPLACE_NEW_MODE) == 0;
    if (!S_ISREG(old.st_mode)) {
        errno = EINVAL;
        return false;
    }
    const bool ownerKept = fchown(descriptor, old.st_uid, old.st_gid) == 0;
    if (!ownerKept) // the group may still be one of the user's own
        std::ignore = fchown(descriptor, static_cast<uid_t>(-1), old.st_gid);
    return fchmod(descriptor, old.st_mode & (ownerKept ? REPLACE_MODE_BITS : 0777)) == 0;
}

static fs::path directoryOf(const std::string &path) {
    const fs::path parent = fs::path(path).parent_path();
    return parent.empty() ? "." : parent;
}

// The last step: the new file is in place. There is no more to do where a directory cannot be
// synced: it may not be read, or its file system says EINVAL.
static Replaced syncDirectory(const Descriptor &directory) {
    const bool synced = directory.number < 0 || fsync(directory.number) == 0 || errno == EINVAL;
    return synced ? Replaced::Yes : Replaced::Unsynced;
}

static bool writeAll(int descriptor, const char *data, std::size_t size) {
    while (size > 0) {
        const ssize_t count = write(descriptor, data, size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        data += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

static bool copyContents(int from, int to) {
    std::array<char, 65536> buffer;
    for (;;) {
        const ssize_t count = read(from, buffer.data(), buffer.size());
        if (count == 0)
            return true;
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 || !writeAll(to, buffer.data(), static_cast<std::size_t>(count)))
            return false;
    }
}

// Copies the new file beside `path` and renames the copy. What a killed run left of one is
// overwritten by the next.
static bool replaceAcrossFileSystems(int source, const std::string &path) {
    const std::string copyPath = path + REPLACE_COPY_SUFFIX;
    File copy = createNewFile(copyPath);
    if (!copy)
        return false;
    if (copyContents(source, fileno(copy.get())) && takeOverAttributes(fileno(copy.get()), path) &&
        fsync(fileno(copy.get())) == 0 && closeWritten(std::move(copy)) &&
        std::rename(copyPath.c_str(), path.c_str()) == 0)
        return true;
    const int reason = errno;
    unlink(copyPath.c_str());
    errno = reason;
    return false;
}

Replaced replaceFile(const std::string &newPath, const std::string &path) {
    const Descriptor source(open(newPath.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    const Descriptor directory(open(directoryOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.number < 0 && errno != EACCES)
        return Replaced::No;
    if (source.number < 0 || !takeOverAttributes(source.number, path) || fsync(source.number) != 0)
        return Replaced::No;
    if (std::rename(newPath.c_str(), path.c_str()) != 0) {
        if (errno != EXDEV || !replaceAcrossFileSystems(source.number, path))
            return Replaced::No;
        unlink(newPath.c_str());
    }
    return syncDirectory(directory);
}
