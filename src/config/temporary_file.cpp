#include "config/temporary_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "base/paths.h"

// Each further try is due to another save that began or ended at that moment.
static constexpr int TEMPORARY_TRIES = 10;

// What flock says on a file system that has no locks, as some network file systems; there a save
// goes without.
static constexpr auto TEMPORARY_NO_LOCKS =
    std::to_array({EBADF, ENOLCK, EINVAL, EOPNOTSUPP, ENOSYS});

enum class Rest { Removed, Held, Stuck };

static bool isHeld(int descriptor) {
    return flock(descriptor, LOCK_EX | LOCK_NB) != 0 &&
           std::ranges::find(TEMPORARY_NO_LOCKS, errno) == TEMPORARY_NO_LOCKS.end();
}

// Only what nobody but this user can open is a save's file. On any other a lock does not count:
// whoever may read it could hold one for ever.
static bool isOwnAlone(int descriptor) {
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
           status.st_uid == geteuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

// Removes what has the name; opened for writing, which locks over a network ask for. A save's file
// that was removed while its lock was asked for is no longer there to remove: what has the name now
// is the next save's.
static Rest removeRest(const FilePlace &place) {
    const int folder = folderNumber(place);
    const Descriptor rest(openat(folder, place.name.c_str(),
                                 O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (rest.number >= 0 && isOwnAlone(rest.number)) {
        if (isHeld(rest.number))
            return Rest::Held;
        if (!leadsTo(place, rest.number))
            return Rest::Removed;
    }
    const bool gone = unlinkat(folder, place.name.c_str(), 0) == 0 || errno == ENOENT;
    return gone ? Rest::Removed : Rest::Stuck;
}

std::optional<TemporaryFile> createTemporaryFile() {
    const auto place = openPlace(CONFIG_TEMP_PATH);
    for (int tries = 0; place && tries < TEMPORARY_TRIES; tries++) {
        File file = createFile(*place);
        if (file && !isHeld(fileno(file.get())) && leadsTo(*place, fileno(file.get())))
            return TemporaryFile{*place, std::move(file)};
        if (file)
            continue;
        const Rest rest = errno == EEXIST ? removeRest(*place) : Rest::Stuck;
        if (rest == Rest::Held)
            break;
        if (rest == Rest::Stuck)
            return std::nullopt;
    }
    return place ? std::optional(TemporaryFile{*place, nullptr}) : std::nullopt;
}

void removeTemporaryFile(TemporaryFile &temporary) {
    removeFile(temporary.place);
    temporary.file.reset();
}
