// Text in windows, counted in terminal cells.
//
// A tab reaches up to the next multiple of 8 cells of the window. Other control characters do not
// show, and a byte that is no character of the locale shows as "?".
#pragma once

#include <curses.h>

#include <string>
#include <string_view>

// Writes a text in the window's present attributes. What does not fit between `column` and the
// window's edge is cut; what lies outside the window is not written.
void putText(WINDOW *window, int row, int column, std::string_view text);

// As putText, but what does not fit on a row goes on in the next one, which begins at the window's
// left edge.
void putWrappedText(WINDOW *window, int row, int column, std::string_view text);

// The cells that a text needs at this column of a window, before anything is cut.
int textCells(std::string_view text, int column);

// The text or, of one that has more than `maxBytes`, "..." and its end, of that length together.
std::string shownEnd(std::string_view text, std::size_t maxBytes);
