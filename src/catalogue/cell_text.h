// What the catalogue's text cells show: the chipset of a card class, and texts of the data files
// written so that a format does not take them for its own marks.
#pragma once

#include <span>
#include <string>
#include <string_view>

// The chipset text of a card class: what follows "chipset", in any letter case, and one separator
// in the first line of the class's display entry that has the word, comments included. The text
// keeps its line end; of a long line it ends with the piece of 99 bytes that has the word.
// Without such a line it is the class itself, and so it is, with a message, when the entry cannot
// be opened.
std::string chipsetOf(std::string_view cardClass);

struct Escape {
    char character;
    std::string_view written;
};

// Adds a text to a cell, with each character that `escapes` lists as the table says.
void appendEscaped(std::string &cell, std::string_view text, std::span<const Escape> escapes);
