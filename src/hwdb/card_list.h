// Card list: the graphics cards that the server supports, grouped under classes.
//
// File format (CARD_LIST_PATH), one line each:
//     Class <text>              class of the cards that follow: the folder of their display entry
//     : <text>                  extra line for the screen section of the card above or, behind a
//                               class, of its first card
//     <name>[, <description>]   a card; the description is not read
//     # ...                     comment; a line of up to 5 characters, line end included, is passed
//                               over as well
//
// Errors: a file that cannot be opened ends the process; a card before the first class is reported
// and skipped.
#pragma once

#include <cstdint>
#include <string_view>

inline constexpr std::uint32_t CARD_NO_VIRTUAL = 0x1; // one mode, no larger virtual screen

struct CardEntry {
    CardEntry *next = nullptr;
    std::string_view name;       // may begin with a prefix that ends in ":"
    std::string_view cardClass;  // shared by its cards; empty: not known
    std::string_view extraLines; // lines for the screen section, each with its line end
    std::uint32_t flags = 0;     // CARD_NO_VIRTUAL, set by reading the display entry
};

extern CardEntry *cardList; // sorted by name; of equal names the later in the file comes first

// Reads the card list and adds its cards to cardList. Called once.
void loadCardList();
