// Display configuration entries: for each card class the display modes of its cards and the
// template of their screen section.
//
// File format (displayConfigPath), one line each:
//     # ...                     comment
//     NoVirtual                 the cards are limited to one mode (anywhere in the file)
//     <configuration line>      template of the screen section, up to the first "Modes" line
//     Modes                     the modes follow, to the end of the file
//     <width> <height> <depth> <refresh> <clock> <8 timings> [<flags>]      full timing
//     <width> <height> <depth> <refresh> "<timing>"       timing of the monitor description
//     <width> <height> <depth> <refresh> <clock> <word> [<flags>]           the server's own timing
//     : <text>                  extra line for the screen section with the mode above or, before
//                               the first mode, with that one
// Depth in bits per pixel, clock in MHz, timings in pixels and lines, refresh in Hz or a code for a
// text: -1 the rate of the DOS installation, -3 non interlaced, -4 interlaced, others none.
//
// Errors: an entry that cannot be opened and a line that begins with a number but is no mode end
// the process; an unterminated timing name is reported and its line skipped; a mode whose timing
// the monitor description lacks is left out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/lists.h"
#include "hwdb/card_list.h"
#include "vdif/mode_timing.h"

inline constexpr std::size_t DISPLAY_PIECE_MAX = 1022; // bytes of a line read at once
inline constexpr std::string_view DISPLAY_MODES = "Modes";

// A mode line. Of a timing of the server's own the numbers behind the display are not known: 0.
struct VideoMode : ModeTiming {
    VideoMode *next = nullptr;
    std::string label; // text in the menu
    std::string name;  // in the configuration; made unique among the chosen modes
    int depth = 0;     // bits per pixel
    int refresh = 0;   // Hz; negative: a code
    std::optional<std::string> timingRef; // names a timing of the server's own
    std::string extraLines;               // lines for the screen section, each with its line end
};
using ModeList = OwnedList<VideoMode>;

// The number of colours at a depth in bits per pixel, of which 32 has 24 for colour; 0 for a depth
// outside 1 to 32.
std::uint32_t colorCount(int depth);

// The path of a class's display entry.
std::string displayConfigPath(std::string_view cardClass);

// A new list of the modes in the entry of the card's class, in file order; null when it has none.
// Sets CARD_NO_VIRTUAL in the card's flags when the entry says so.
ModeList readDisplayEntry(CardEntry &card);

// The chosen modes, by their positions in a list, from 1. A position that names no mode ends them.
std::vector<VideoMode *> selectedModes(const ModeList &modes, const std::vector<int> &selection);
