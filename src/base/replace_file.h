// Replacing a file by a new one, so that at every moment the old or the new one is there whole.
#pragma once

#include <string>

// Which file stands at the end; of the first two the reason is in errno.
enum class Replaced {
    No,       // the old file, as it was; the new one is kept where it was written
    Unsynced, // the new file, which a loss of power may still undo: its directory was not synced
    Yes,      // the new file, safe on disk
};

// Puts the finished file `newPath` in the place of `path`, synced with its directory. The owner, if
// the user may give files away, and the permission bits of an old regular file are kept; otherwise,
// and where a symbolic link stood, the file is 0644: the link is replaced and its target is left
// alone. From another file system the new file is copied beside `path` first, as ".scrconf" behind
// its name. A directory, device or FIFO is never replaced.
Replaced replaceFile(const std::string &newPath, const std::string &path);
