#include "ui/window.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

#include "base/end_signals.h"
#include "base/messages.h"

// A window that is open, with the place that it has in the fixed layout whatever a resize made of
// it. `paint` is empty while the window is hidden.
struct OpenWindow {
    WINDOW *window;
    int screenColumn, screenRow;
    int width, height;
    std::function<void()> paint;
};

// In the order in which they were shown last, which is the order from bottom to top.
static std::vector<OpenWindow> openWindows;

static std::vector<OpenWindow>::iterator findWindow(const WINDOW *window) {
    return std::ranges::find(openWindows, window, &OpenWindow::window);
}

// The signals that are held back while input is waited for: those of before holdSignals, less the
// ones that it holds back.
static sigset_t waitSignals;

static void blockSignal(int number) {
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, number);
    sigprocmask(SIG_BLOCK, &blocked, nullptr);
    sigdelset(&waitSignals, number);
}

// Holds back the signals that change the screen, except while input is waited for, where a handler
// only ends the wait: a resize between a drawing and the wait is not missed.
static void holdSignals() {
    sigprocmask(SIG_BLOCK, nullptr, &waitSignals);
    // Where a handler is, curses sets none. Its own would take LINES and COLUMNS for the new size.
    for (const int number : {SIGWINCH, SIGCONT}) {
        struct sigaction action = {};
        action.sa_handler = [](int) {};
        sigaction(number, &action, nullptr);
        blockSignal(number);
    }
    blockSignal(SIGTSTP); // the handler of curses is right, as long as it runs at the wait
    // To write to a pipe that has lost its reader would end the run and leave the terminal raw;
    // that nobody reads the messages any more is no reason to end.
    std::signal(SIGPIPE, SIG_IGN);
}

static void paintShownWindows() {
    for (const OpenWindow &open : openWindows)
        if (open.paint)
            open.paint();
}

// Gives every window its size and place again, which curses changes when it does not fit, and draws
// what is shown. On a terminal that is too small for a window curses draws the part that fits.
static void repaintScreen() {
    for (const OpenWindow &open : openWindows) {
        if (open.window == stdscr)
            continue;
        wresize(open.window, 1, 1); // curses moves no window that would not fit
        mvwin(open.window, open.screenRow, open.screenColumn);
        wresize(open.window, open.height, open.width);
    }
    clearok(curscr, TRUE);
    touchwin(stdscr);
    wnoutrefresh(stdscr);
    paintShownWindows();
}

// Takes over the terminal as it is now: its size, and its modes, which a shell has set back while
// the run was stopped. The screen is repainted even when the size is the old one: it may have been
// another in between, and the terminal has lost what it did not hold.
static void followSignal() {
    endOnSignal();
    reset_prog_mode();
    struct winsize size = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && is_term_resized(size.ws_row, size.ws_col))
        resizeterm(size.ws_row, size.ws_col);
    repaintScreen();
}

// Lets in the signals that came meanwhile: while there is something to read no wait does so.
static void admitSignals() {
    static constexpr timespec NO_TIME = {};
    endOnSignal();
    while (ppoll(nullptr, 0, &NO_TIME, &waitSignals) < 0 && errno == EINTR)
        followSignal();
}

// Waits until standard input has something to read or has ended. No signal comes between the look
// for one and the wait, which lets them in.
static void waitInput() {
    const EndSignalsHeld held;
    endOnSignal();
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    while (ppoll(&input, 1, nullptr, &waitSignals) < 0) {
        if (errno != EINTR)
            fatalError("End of input\n");
        followSignal();
    }
}

void CloseWindow::operator()(WINDOW *window) const {
    openWindows.erase(findWindow(window));
    delwin(window);
}

// As initscr does, whose own message would show the type's name to the terminal as it is.
static void openTerminal() {
    const char *type = std::getenv("TERM");
    if (!type || !*type)
        type = "unknown";
    if (!newterm(type, stdout, stdin)) {
        showMessage("Error opening terminal: %s.\n", type);
        std::exit(EXIT_FAILURE);
    }
    def_prog_mode();
}

// A terminal that cannot place its cursor shows a stream of text, no screen.
static void checkTerminal() {
    const std::string type = termname();
    const int columns = COLS, lines = LINES;
    if (!terminalHas("cup")) {
        endCurses();
        fatalError("Terminal type %s cannot place the cursor\n", type.c_str());
    }
    if (lines < LAYOUT_LINES || columns < LAYOUT_COLUMNS) {
        endCurses();
        fatalError("Terminal too small: %d columns by %d lines, at least %d by %d needed\n",
                   columns, lines, LAYOUT_COLUMNS, LAYOUT_LINES);
    }
}

void startCurses() {
    catchEndSignals();
    holdSignals();
    openTerminal();
    cursesActive = true;
    checkTerminal();
    if (has_colors())
        start_color();
    noecho();
    raw();
    typeahead(-1); // a redraw is finished even when more input waits
    openWindows.push_back({stdscr, 0, 0, 0, 0, {}});
}

Window openWindow(int screenColumn, int screenRow, int width, int height) {
    WINDOW *window = newwin(height, width, screenRow, screenColumn);
    if (!window)
        fatalError("Cannot open a window of %d columns by %d lines\n", width, height);
    wattrset(window, A_NORMAL);
    werase(window);
    openWindows.push_back({window, screenColumn, screenRow, width, height, {}});
    return Window(window);
}

void showWindow(WINDOW *window, std::function<void()> paint) {
    paint();
    const auto shown = findWindow(window);
    shown->paint = std::move(paint);
    std::rotate(shown, shown + 1, openWindows.end());
}

void hideWindow(WINDOW *window) {
    findWindow(window)->paint = nullptr;
    werase(window);
    wrefresh(window);
    paintShownWindows();
}

// Curses is asked first: it may hold bytes that it read ahead. When it finds nothing although input
// was announced, the input has ended.
int waitKey(WINDOW *window) {
    admitSignals();
    nodelay(window, TRUE);
    bool waited = false;
    for (;;) {
        errno = 0;
        const int key = wgetch(window);
        if (key != ERR && key != KEY_RESIZE)
            return key;
        if (key == ERR && waited && errno != EINTR)
            fatalError("End of input\n");
        waitInput();
        waited = true;
    }
}

int readKey() {
    admitSignals();
    for (;;) {
        waitInput();
        unsigned char byte = 0;
        const ssize_t count = read(STDIN_FILENO, &byte, 1);
        if (count == 1)
            return byte;
        if (count == 0 || errno != EINTR)
            fatalError("End of input\n");
    }
}
