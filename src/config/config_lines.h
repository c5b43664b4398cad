// The global region of the server configuration file, read into a fixed, ordered set of keyword
// slots.
//
// The global region holds keyword lines and ends at the first line that begins with "Driver ":
//     <keyword> <value>        a setting
//     # <keyword> <value>      a setting that is commented out
// Every other line of the region is dropped: unknown keywords, free comments, blank lines and more
// lines of one keyword than it has slots. The writer puts the slots back in table order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/file.h"

inline constexpr std::size_t CONFIG_PIECE_MAX = 1023; // bytes of a line read at once

// What the first line of a screen section begins with.
inline constexpr std::string_view CONFIG_SECTION_START = "Driver ";

enum class LineState : std::int32_t {
    Absent = 0,    // the keyword did not occur; the slot is not written
    Commented = 1, // written back behind "# "
    Active = 2,
};

struct ConfigLine {
    ConfigLine *next = nullptr;
    std::string_view keyword;         // refers to the keyword table
    std::optional<std::string> value; // text behind the keyword, less its line end; none: no value
    LineState state = LineState::Absent;
};

extern ConfigLine *configLines; // in keyword table order

// A new slot list, filled from the global region of the file; null when it cannot be opened.
ConfigLine *readConfigLines(const FilePlace &place);

// The first slot of exactly this keyword that has no value; null when there is none.
ConfigLine *findFreeSlot(ConfigLine *head, std::string_view keyword);
