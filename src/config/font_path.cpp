#include "config/font_path.h"

#include <dirent.h>

#include <algorithm>
#include <array>
#include <memory>

#include "base/allocation.h"
#include "base/file.h"
#include "base/messages.h"
#include "base/paths.h"

static constexpr std::size_t FONT_PATH_MAX = 1023; // bytes of the path of a "fonts.dir" file
static constexpr std::array<std::string_view, 3> FONT_PREFERRED = {"misc", "75dpi", "100dpi"};

struct CloseDirectory {
    void operator()(DIR *directory) const { closedir(directory); }
};

static std::optional<std::string> copyFallback() {
    const AllocationGuard guard;
    try {
        return FONT_FALLBACK_PATH;
    } catch (const std::bad_alloc &) {
        return std::nullopt;
    }
}

std::optional<std::string> findFontPath() {
    std::vector<FontElement> table;
    for (const char *candidate : FONT_DIRECTORIES)
        scanFontDirectory(candidate, table);
    auto joined = joinFontPath(table);
    return joined ? joined : copyFallback();
}

void scanFontDirectory(const std::string &dir, std::vector<FontElement> &table) {
    const std::unique_ptr<DIR, CloseDirectory> directory(opendir(dir.c_str()));
    if (!directory)
        return;
    while (const dirent *entry = readdir(directory.get())) {
        const std::string path = dir + "/" + entry->d_name + "/fonts.dir";
        if (path.size() > FONT_PATH_MAX)
            continue;
        if (const auto state = fileState(path))
            addFontElement(state->inode, path, table);
    }
}

void addFontElement(ino_t key, std::string_view path, std::vector<FontElement> &table) {
    if (std::ranges::find(table, key, &FontElement::key) != table.end())
        return;
    if (table.size() == FONT_ELEMENT_MAX) {
        showMessage("Font Path elements array boundary exceeded\n");
        return;
    }
    table.push_back({key, std::string(path.substr(0, path.rfind('/')))});
}

std::optional<std::string> joinFontPath(std::vector<FontElement> &table) {
    auto joined = table.empty() ? std::nullopt : AllocateBuffer(table);
    if (!joined)
        return std::nullopt;
    for (const std::string_view name : FONT_PREFERRED)
        if (const std::string *path = takeElementByName(name, table))
            joined->append(*path).append(",");
    for (const FontElement &element : table)
        if (!element.taken)
            joined->append(element.path).append(",");
    joined->pop_back();
    return joined;
}

const std::string *takeElementByName(std::string_view name, std::vector<FontElement> &table) {
    for (FontElement &element : table) {
        if (std::string_view(element.path).substr(element.path.rfind('/') + 1) != name)
            continue;
        element.taken = true;
        return &element.path;
    }
    return nullptr;
}

std::optional<std::string> AllocateBuffer(const std::vector<FontElement> &table) {
    std::size_t size = 1;
    for (const FontElement &element : table)
        size += element.path.size() + 1;
    const AllocationGuard guard;
    try {
        std::string buffer;
        buffer.reserve(size);
        return buffer;
    } catch (const std::bad_alloc &) {
        showMessage("malloc failed in AllocateBuffer\n");
        return std::nullopt;
    }
}
