#include "ui/window.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <vector>

#include "frame/messages.h"

// A window that is open, with the place that it has in the fixed layout whatever a resize made of
// it. `paint` is empty while the window is hidden.
struct OpenWindow {
    WINDOW *window;
    int screenColumn, screenRow;
    int width, height;
    std::function<void()> paint;
};

// In the order in which they were shown last, which is the order from bottom to top. Never
// destroyed: windows that live until the process exits still leave it then.
static std::vector<OpenWindow> &openWindows() {
    static auto &windows = *new std::vector<OpenWindow>;
    return windows;
}

static std::vector<OpenWindow>::iterator findWindow(const WINDOW *window) {
    return std::ranges::find(openWindows(), window, &OpenWindow::window);
}

// The signals that are let through while input is waited for.
static sigset_t waitSignals;

// A resize is told by a signal. It is held back except while input is waited for, so that none is
// missed between a drawing and the wait. The handler only ends the wait; with one there, curses
// sets none of its own and never takes LINES and COLUMNS for the new size.
static void holdResizeSignal() {
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGWINCH, &action, nullptr);
    sigset_t resize;
    sigemptyset(&resize);
    sigaddset(&resize, SIGWINCH);
    sigprocmask(SIG_BLOCK, &resize, &waitSignals);
    sigdelset(&waitSignals, SIGWINCH);
}

static void paintShownWindows() {
    for (const OpenWindow &open : openWindows())
        if (open.paint)
            open.paint();
}

// Gives every window its size and place again, which curses changes when it does not fit, and draws
// what is shown. On a terminal that is too small for a window curses draws the part that fits.
static void repaintScreen() {
    for (const OpenWindow &open : openWindows()) {
        if (open.window == stdscr)
            continue;
        wresize(open.window, open.height, open.width);
        mvwin(open.window, open.screenRow, open.screenColumn);
    }
    clearok(curscr, TRUE);
    touchwin(stdscr);
    wnoutrefresh(stdscr);
    paintShownWindows();
}

// Takes over the terminal's size. The screen is repainted even when the size is the old one: it may
// have been another in between, and the terminal has lost what it did not hold.
static void followResize() {
    struct winsize size = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && is_term_resized(size.ws_row, size.ws_col))
        resizeterm(size.ws_row, size.ws_col);
    repaintScreen();
}

// Waits until standard input has something to read or has ended.
static void waitInput() {
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    while (ppoll(&input, 1, nullptr, &waitSignals) < 0) {
        if (errno != EINTR)
            fatalError("End of input\n");
        followResize();
    }
}

void CloseWindow::operator()(WINDOW *window) const {
    openWindows().erase(findWindow(window));
    delwin(window);
}

void startCurses() {
    holdResizeSignal();
    initscr();
    cursesActive = true;
    if (LINES < LAYOUT_LINES || COLS < LAYOUT_COLUMNS) {
        const int columns = COLS, lines = LINES;
        endCurses();
        fatalError("Terminal too small: %d columns by %d lines, at least %d by %d needed\n",
                   columns, lines, LAYOUT_COLUMNS, LAYOUT_LINES);
    }
    if (has_colors())
        start_color();
    noecho();
    raw();
    typeahead(-1); // a redraw is finished even when more input waits
    openWindows().push_back({stdscr, 0, 0, 0, 0, {}});
}

Window openWindow(int screenColumn, int screenRow, int width, int height) {
    WINDOW *window = newwin(height, width, screenRow, screenColumn);
    if (!window)
        fatalError("Cannot open a window of %d columns by %d lines\n", width, height);
    wattrset(window, A_NORMAL);
    werase(window);
    openWindows().push_back({window, screenColumn, screenRow, width, height, {}});
    return Window(window);
}

void showWindow(WINDOW *window, std::function<void()> paint) {
    paint();
    const auto shown = findWindow(window);
    shown->paint = std::move(paint);
    std::rotate(shown, shown + 1, openWindows().end());
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
