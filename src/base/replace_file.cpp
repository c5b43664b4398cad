#include "base/replace_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>

#include "base/file_attributes.h"

static constexpr mode_t REPLACE_NEW_MODE = 0644;
static constexpr std::size_t REPLACE_COPY_SIZE = 65536; // bytes copied at once

// Gives the new file the attributes that the file at the place is to have.
static bool takeOverAttributes(int newFile, const FilePlace &place, std::FILE *old) {
    const auto standing = linkState(place);
    if (!standing)
        return errno == ENOENT && setBits(newFile, REPLACE_NEW_MODE);
    if (S_ISLNK(standing->mode))
        return old ? copyBits(fileno(old), newFile, REPLACE_NEW_MODE)
                   : setBits(newFile, REPLACE_NEW_MODE);
    if (!S_ISREG(standing->mode)) {
        errno = EINVAL;
        return false;
    }
    if (old)
        return copyAttributes(fileno(old), newFile);
    const Descriptor unread(
        openat(folderNumber(place), place.name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    return copyAttributes(unread.number, newFile);
}

// There is no more to do where the folder cannot be synced: it may not be read, or its file system
// does not know how.
static bool syncFolder(const FilePlace &place) {
    const Descriptor folder(openat(folderNumber(place), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.number < 0)
        return errno == EACCES;
    return fsync(folder.number) == 0 || errno == EINVAL || errno == EOPNOTSUPP || errno == ENOSYS;
}

// Removes a new file that is of no use; the reason for that stays in errno.
static void discardFile(const FilePlace &place, int descriptor) {
    const int reason = errno;
    if (leadsTo(place, descriptor))
        removeFile(place);
    errno = reason;
}

// Another file that has got the name meanwhile is not what was meant, and may be half written.
static bool isStillAt(const FilePlace &place, int number) {
    errno = EBUSY;
    return leadsTo(place, number);
}

// What somebody has put in the place of the old file meanwhile is not replaced.
static bool oldStillStands(const FilePlace &place, std::FILE *old) {
    const auto standing = linkState(place);
    return !old || !standing || !S_ISREG(standing->mode) || isStillAt(place, fileno(old));
}

Replaced replaceFile(File newFile, const FilePlace &newPlace, const FilePlace &place,
                     std::FILE *old) {
    const int folder = folderNumber(place), number = fileno(newFile.get());
    if (flushWritten(newFile.get()) && takeOverAttributes(number, place, old) &&
        fsync(number) == 0 && isStillAt(newPlace, number) && oldStillStands(place, old) &&
        renameat(folder, newPlace.name.c_str(), folder, place.name.c_str()) == 0)
        return syncFolder(place) ? Replaced::Yes : Replaced::Unsynced;
    discardFile(newPlace, number);
    return Replaced::No;
}

FilePlace keptPlace(const FilePlace &place) {
    for (int number = 1;; number++) {
        FilePlace kept = besidePlace(place, ".~" + std::to_string(number) + "~");
        if (!linkState(kept))
            return kept;
    }
}

static bool copyContents(std::FILE *from, std::FILE *to) {
    std::array<char, REPLACE_COPY_SIZE> buffer;
    std::rewind(from);
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), from))
        writeText(to, {buffer.data(), count});
    return !std::ferror(from) && flushWritten(to);
}

// Some file systems cannot refuse a name that is taken; there it was free a moment ago.
static bool renameToFree(int folder, const char *from, const char *to) {
    return renameat2(folder, from, folder, to, RENAME_NOREPLACE) == 0 ||
           ((errno == EINVAL || errno == ENOSYS) && renameat(folder, from, folder, to) == 0);
}

// The copy gets its name when it is whole. Names that others take meanwhile are passed over.
static std::optional<FilePlace> keepCopy(const FilePlace &place, std::FILE *old) {
    const FilePlace copyPlace = besidePlace(place, REPLACE_SUFFIX);
    const File copy = old ? createNewFile(copyPlace) : nullptr;
    if (!copy)
        return std::nullopt;
    const int folder = folderNumber(place), number = fileno(copy.get());
    if (copyContents(old, copy.get()) && copyAttributes(fileno(old), number) &&
        fsync(number) == 0 && isStillAt(copyPlace, number))
        do {
            const FilePlace kept = keptPlace(place);
            if (renameToFree(folder, copyPlace.name.c_str(), kept.name.c_str()))
                return kept;
        } while (errno == EEXIST);
    discardFile(copyPlace, number);
    return std::nullopt;
}

std::optional<FilePlace> keepFile(const FilePlace &place, std::FILE *old) {
    const int folder = folderNumber(place);
    for (;;) {
        const FilePlace kept = keptPlace(place);
        if (linkat(folder, place.name.c_str(), folder, kept.name.c_str(), 0) != 0) {
            if (errno != EEXIST)
                return keepCopy(place, old);
        } else if (!old || isStillAt(kept, fileno(old))) {
            return kept;
        } else {
            removeFile(kept);
            return std::nullopt;
        }
    }
}
