// Replacing a file by a new one, so that at every moment the old or the new one is there whole.
#pragma once

#include <string>

// Puts the finished file `newPath` in the place of `path`, synced with its directory. The owner, if
// the user may give files away, and the permission bits of an old regular file are kept; otherwise,
// and where a symbolic link stood, the file is 0644: the link is replaced and its target is left
// alone. From another file system
// the new file is copied beside `path` first. A directory, device or FIFO is never replaced.
// False, with the reason in errno, when a step failed: the old file is in place and the new one is
// kept at `newPath`. When only the sync of the directory failed, the new file is in place.
bool replaceFile(const std::string &newPath, const std::string &path);
