#include "base/messages.h"

#include <curses.h>
#include <term.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/end_signals.h"
#include "base/shown_text.h"

bool cursesActive = false;

static constexpr std::size_t MESSAGE_SHOWN_MAX = 8192; // bytes of a message that a terminal shows

// On a terminal a message shows nothing but characters. The text takes no memory of the heap: it
// may be that there is none.
[[gnu::format(printf, 1, 0)]] static void showText(const char *format, va_list arguments) {
    std::array<char, MESSAGE_SHOWN_MAX> text;
    const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
    if (length > 0)
        writeShown(stderr,
                   {text.data(), std::min(static_cast<std::size_t>(length), text.size() - 1)});
}

// On the terminal that curses owns the message disturbs the screen. Curses also turns off the
// translation of "\n" into a new line at column 0; the shell's modes are put back for the message.
[[gnu::format(printf, 1, 0)]] static void writeMessage(const char *format, va_list arguments) {
    const bool onTerminal = isatty(STDERR_FILENO), onScreen = cursesActive && onTerminal;
    if (onScreen)
        reset_shell_mode();
    if (onTerminal)
        showText(format, arguments);
    else
        std::vfprintf(stderr, format, arguments);
    if (onScreen) {
        reset_prog_mode();
        clearok(curscr, TRUE);
    }
}

[[gnu::format(printf, 1, 0)]] static void writeFatalText(const char *format, va_list arguments) {
    va_list copy;
    va_copy(copy, arguments);
    showMessage("\nFatal error:\n");
    writeMessage(format, copy);
    showMessage("\n");
    va_end(copy);
}

// True when leaving curses switches away from the screen on which standard error is shown.
static bool leavingHidesMessages() {
    return cursesActive && isatty(STDERR_FILENO) && terminalHas("rmcup");
}

void showMessage(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    writeMessage(format, arguments);
    va_end(arguments);
}

void fatalError(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const bool hidden = leavingHidesMessages();
    admitEndSignals();
    writeFatalText(format, arguments);
    endCurses();
    if (hidden)
        writeFatalText(format, arguments);
    va_end(arguments);
    std::exit(EXIT_FAILURE);
}

void systemError(const char *format, ...) {
    const int reason = errno;
    va_list arguments;
    va_start(arguments, format);
    writeMessage(format, arguments);
    va_end(arguments);
    showMessage(": %s\n", std::strerror(reason));
    std::exit(EXIT_FAILURE);
}

bool terminalHas(const char *capability) {
    const char *text = tigetstr(capability);
    return text && text != reinterpret_cast<char *>(-1); // -1: it is no text
}

void endCurses() {
    if (!cursesActive)
        return;
    cursesActive = false;
    endwin();
}
