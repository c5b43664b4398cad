// Replacing a file by a new one, so that at every moment the old or the new one is there whole, and
// keeping the old one beside it.
#pragma once

#include <optional>
#include <string_view>

#include "base/file.h"

// Behind the name of a file that is made to stand beside or in the place of another. What a run
// that was killed left under such a name is overwritten by the next.
inline constexpr std::string_view REPLACE_SUFFIX = ".scrconf";

// Which file stands at the end; of the first two the reason is in errno.
enum class Replaced {
    No,       // the old file, as it was; the new one is gone
    Unsynced, // the new file, which a loss of power may still undo: its folder was not synced
    Yes,      // the new file, safe on disk
};

// Puts a new file, made by createNewFile at `newPlace` beside `place`, in the place of the old one,
// synced with its folder. `old` is the old file, open; null when it could not be read or is not
// there. A regular file hands on what copyAttributes keeps; without one the new file is 0644.
// Where a link stands the link is replaced, its target left alone, and the new file has the group
// of `old` and is 0644 less the bits that it lacks: what a link led to does not come out readable.
// A directory, device or FIFO is never replaced.
Replaced replaceFile(File newFile, const FilePlace &newPlace, const FilePlace &place,
                     std::FILE *old);

// The place that keepFile would give the file: beside it, its name with ".~1~" behind it, or the
// first larger number that is free.
FilePlace keptPlace(const FilePlace &place);

// Gives the file at `place`, open as `old` unless it could not be read, a second name, or, where
// links are not to be had, copies it with its attributes. Nothing is overwritten. Returns the
// place; none, with the reason in errno, when that fails.
std::optional<FilePlace> keepFile(const FilePlace &place, std::FILE *old);
