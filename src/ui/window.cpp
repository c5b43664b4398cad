#include "ui/window.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <string>
#include <vector>

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

static volatile std::sig_atomic_t endSignal = 0; // the signal that asks for the end; 0: none did

static void blockSignal(int number) {
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, number);
    sigprocmask(SIG_BLOCK, &blocked, nullptr);
    sigdelset(&waitSignals, number);
}

static void holdSignal(int number, void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    sigaction(number, &action, nullptr);
    blockSignal(number);
}

static bool isIgnored(int number) {
    struct sigaction action = {};
    sigaction(number, nullptr, &action);
    return action.sa_handler == SIG_IGN;
}

// Holds back every signal that the program answers, except while input is waited for, where a
// handler only ends the wait: a resize between a drawing and the wait is not missed, and a save is
// not cut short.
static void holdSignals() {
    sigprocmask(SIG_BLOCK, nullptr, &waitSignals);
    // Where a handler is, curses sets none. Its own would take LINES and COLUMNS for the new size,
    // and would tidy up the terminal amid whatever runs.
    holdSignal(SIGWINCH, [](int) {});
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM})
        if (!isIgnored(number)) // as under nohup
            holdSignal(number, [](int received) { endSignal = received; });
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

static void followSignal() {
    if (endSignal != 0)
        fatalError("Ended by a signal: %s\n", strsignal(endSignal));
    followResize();
}

// Lets in the signals that came meanwhile: while there is something to read no wait does so.
static void admitSignals() {
    static constexpr timespec NO_TIME = {};
    while (ppoll(nullptr, 0, &NO_TIME, &waitSignals) < 0 && errno == EINTR)
        followSignal();
}

// Waits until standard input has something to read or has ended.
static void waitInput() {
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
    holdSignals();
    initscr();
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
