#include "catalogue/cell_text.h"

#include <algorithm>

#include "base/ascii.h"
#include "base/line_reader.h"
#include "base/messages.h"
#include "hwdb/display_entry.h"

static constexpr std::size_t CHIPSET_PIECE_MAX = 99; // bytes of a line read at once
static constexpr std::string_view CHIPSET_WORD = "chipset";

std::string chipsetOf(std::string_view cardClass) {
    const std::string path = displayConfigPath(cardClass);
    auto reader = openLines(path, CHIPSET_PIECE_MAX);
    if (!reader) {
        showMessage("Cannot Open %s\n", path.c_str());
        return std::string(cardClass);
    }
    std::string_view line;
    while (readLine(*reader, line)) {
        const auto word =
            std::search(line.begin(), line.end(), CHIPSET_WORD.begin(), CHIPSET_WORD.end(),
                        [](char character, char sought) { return lowerCase(character) == sought; });
        if (word == line.end())
            continue;
        const auto separator = word + CHIPSET_WORD.size();
        return std::string(separator == line.end() ? separator : separator + 1, line.end());
    }
    return std::string(cardClass);
}

void appendEscaped(std::string &cell, std::string_view text, std::span<const Escape> escapes) {
    for (const char character : text) {
        const auto escape = std::ranges::find(escapes, character, &Escape::character);
        if (escape == escapes.end())
            cell += character;
        else
            cell += escape->written;
    }
}
