// The supported-card catalogue: one row for each card, with the card's name, its chipset and a cell
// for each screen width and colour depth. This module walks the cards and fills the cells; a
// format is a module of its own that supplies a CatalogueFormatter.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string_view>

#include "hwdb/card_list.h"

// The columns go by width (640, 800, 1024, 1152, 1280, 1600 pixels) and within each width by depth
// (4, 8, 16, 24 bits per pixel).
inline constexpr std::size_t CATALOGUE_COLUMNS = 24;
inline constexpr std::size_t CATALOGUE_DEPTHS = 4; // columns of each width

inline constexpr int CATALOGUE_GROUP_SIZE = 10000; // cards of a table body or page

// What a format writes to `out`.
struct CatalogueFormatter {
    void (*beginGroup)(std::FILE *out); // opens a table body or a page
    void (*endGroup)(std::FILE *out);   // closes the last row and the group
    // Closes the row before, if there is one, opens the card's and writes its name and chipset.
    void (*cardRow)(std::FILE *out, int indexInGroup, const CardEntry &card);
    // Writes the cell of a column: the refresh rates of the card's modes in Hz, "i" behind the
    // interlaced ones, "fxd" for a fixed rate, empty without a mode. With marks the cell shows
    // only whether it is empty.
    void (*columnCell)(std::FILE *out, std::string_view cellText, std::size_t column, bool marks);
};

// Reads the card list and writes the catalogue of its cards, with the first `columnCount` columns,
// 1 to CATALOGUE_COLUMNS, and a count of the cards to standard output; a group has at least one
// card. Without cards only the end of a group is written. A card list or display entry that cannot
// be read ends the process; `out` keeps what was written.
void buildCatalogue(std::FILE *out, const CatalogueFormatter &formatter, int groupSize,
                    std::size_t columnCount, bool marks);
