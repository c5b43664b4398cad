// Curses windows of the fixed layout of 80 columns by 24 lines: opening, showing and hiding them,
// keys, and repainting after the terminal was resized.
#pragma once

#include <curses.h>

#include <functional>
#include <memory>

inline constexpr int LAYOUT_COLUMNS = 80, LAYOUT_LINES = 24; // a terminal has at least these

struct CloseWindow {
    void operator()(WINDOW *window) const;
};
using Window = std::unique_ptr<WINDOW, CloseWindow>;

// Starts curses. A terminal below 80 columns by 24 lines ends the process, as does one that curses
// cannot use. From now on the signals that ask for the end are caught; a resize, a stop and its end
// are followed where input is waited for.
void startCurses();

// A new, empty window with its top left corner at the given place of the terminal, counted from 0.
// A window that curses cannot make ends the process.
Window openWindow(int screenColumn, int screenRow, int width, int height);

// Puts the window on screen by `paint`, which draws and refreshes all of it and is called again
// whenever the terminal was resized, until hideWindow. Also for stdscr.
void showWindow(WINDOW *window, std::function<void()> paint);

// Takes the window off the screen and draws what it covered.
void hideWindow(WINDOW *window);

// The next key, read through curses. The end of input ends the process.
int waitKey(WINDOW *window);

// The next byte of standard input, past curses. The end of input ends the process.
int readKey();
