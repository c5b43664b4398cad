// Finding the X font directories of this machine, for a configuration made from the template.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

inline constexpr std::size_t FONT_ELEMENT_MAX = 10; // directories in a font path

struct FontElement {
    ino_t key;          // inode number of the directory's "fonts.dir" file
    std::string path;   // the directory
    bool taken = false; // already in the joined path
};

// The directories that hold a "fonts.dir" file, joined by commas: "misc", "75dpi" and "100dpi"
// first, the rest as they were found. Without any, the server's own font directory. None only when
// memory is exhausted. Directories beyond FONT_ELEMENT_MAX are reported and left out.
std::optional<std::string> findFontPath();

// Adds the font directories directly in `dir`, which may be missing.
void scanFontDirectory(const std::string &dir, std::vector<FontElement> &table);

// Adds the directory of the "fonts.dir" file `path`, unless the table has its key already or, with
// a message, is full.
void addFontElement(ino_t key, std::string_view path, std::vector<FontElement> &table);

// None for an empty table and, with a message, when memory is exhausted.
std::optional<std::string> joinFontPath(std::vector<FontElement> &table);

// The path of the first element whose directory has this name, now taken; null when there is none.
const std::string *takeElementByName(std::string_view name, std::vector<FontElement> &table);

// An empty text with room for all elements; none, with a message, when memory is exhausted.
std::optional<std::string> AllocateBuffer(const std::vector<FontElement> &table);
