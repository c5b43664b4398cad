// How a problem is told: a message on standard error, after which the run goes on, or an error that
// ends the process and gives the terminal back first.
#pragma once

// True from the start of curses to its end: curses owns the terminal.
extern bool cursesActive;

// Writes a printf-style message to standard error; no line end is added. While curses is active
// the message disturbs the screen, so the next drawing repaints the whole terminal.
[[gnu::format(printf, 1, 2)]] void showMessage(const char *format, ...);

// Writes the banner "Fatal error:" and a printf-style message to standard error, leaves curses and
// ends the process with status 1. A terminal whose alternate screen would take the text away with
// it gets the text once more after curses was left.
[[noreturn, gnu::format(printf, 1, 2)]] void fatalError(const char *format, ...);

// Writes a printf-style text, ": " and the system's reason (errno) to standard error, as perror
// does, and ends the process with status 1.
[[noreturn, gnu::format(printf, 1, 2)]] void systemError(const char *format, ...);

// True when the description of the terminal that curses runs on has this text capability.
bool terminalHas(const char *capability);

// Gives the terminal back from curses; does nothing when curses is not active.
void endCurses();
