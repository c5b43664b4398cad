#include "support/terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utmp.h>

#include <chrono>
#include <csignal>
#include <cstdio>

static constexpr auto TIME_LIMIT = std::chrono::seconds(10);
static constexpr int POLL_INTERVAL = 2; // ms, between two looks at a program that works

struct NamedKey {
    std::string_view name;
    VTermKey key;           // sent the way the terminal's keypad mode asks for
    std::string_view bytes; // sent as they are, when `key` is none
};
static constexpr NamedKey NAMED_KEYS[] = {
    {"Up", VTERM_KEY_UP, {}},           {"Down", VTERM_KEY_DOWN, {}},
    {"Enter", VTERM_KEY_NONE, "\r"},    {"Esc", VTERM_KEY_NONE, "\033"},
    {"Delete", VTERM_KEY_NONE, "\x7f"}, {"Backspace", VTERM_KEY_NONE, "\b"},
    {"Space", VTERM_KEY_NONE, " "},
};

// Of a terminal this also makes the kernel deliver what the other side has written before.
static bool hasInput(int file, int wait) {
    pollfd state{file, POLLIN, 0};
    return poll(&state, 1, wait) == 1 && (state.revents & POLLIN);
}

// True when the process sleeps in a read of standard input, or in a poll without a time limit: one
// with a limit is curses waiting for the rest of an escape sequence.
static bool waitsForKey(pid_t process) {
    const std::string state = readFile("/proc/" + std::to_string(process) + "/syscall");
    long call = -1;
    unsigned long long first = 0, second = 0, third = 0; // the call's arguments
    if (std::sscanf(state.c_str(), "%ld %llx %llx %llx", &call, &first, &second, &third) != 4)
        return false; // "running", or gone
#ifdef SYS_poll
    if (call == SYS_poll)
        return static_cast<int>(third) < 0;
#endif
    return (call == SYS_read && first == STDIN_FILENO) || (call == SYS_ppoll && third == 0);
}

// True when a signal is on its way to the process: it still looks asleep then.
static bool hasSignal(pid_t process) {
    const std::string state = readFile("/proc/" + std::to_string(process) + "/status");
    const auto pending = state.find("ShdPnd:\t");
    return pending != state.npos && std::stoull(state.substr(pending + 8), nullptr, 16) != 0;
}

static winsize windowSize(int lines, int columns) {
    return {static_cast<unsigned short>(lines), static_cast<unsigned short>(columns), 0, 0};
}

static bool isBlank(const VTermScreenCell &cell) {
    return (cell.chars[0] == 0 || cell.chars[0] == ' ') && !cell.attrs.reverse;
}

static std::string markOf(const VTermScreenCellAttrs &attributes) {
    if (attributes.bold)
        return attributes.reverse ? "{br:" : "{b:";
    return attributes.reverse ? "{r:" : "";
}

TerminalTest::~TerminalTest() { stop(); }

void TerminalTest::SetUp() {
    if (!canEnterPrivateRoot())
        GTEST_SKIP() << "a private root takes root or user namespaces";
    stagePrivateRoot(directory / "root");
}

void TerminalTest::start(const Arguments &arguments, const Environment &environment) {
    stop();
    openTerminal();
    program = fork();
    if (program == 0) {
        close(master);
        login_tty(slave);
        if (errorsToFile)
            dup2(open("errors", O_WRONLY | O_CREAT | O_TRUNC, 0666), STDERR_FILENO);
        std::signal(SIGHUP, SIG_IGN);
        executeInPrivateRoot(directory / "root", arguments, environment);
    }
    settle("the start");
}

void TerminalTest::openTerminal() {
    emulator = vterm_new(lines, columns);
    vterm_set_utf8(emulator, 1);
    const auto reply = [](const char *bytes, std::size_t length, void *user) {
        static_cast<TerminalTest *>(user)->replies.append(bytes, length);
    };
    vterm_output_set_callback(emulator, reply, this);

    static VTermScreenCallbacks callbacks{};
    callbacks.settermprop = [](VTermProp property, VTermValue *value, void *user) {
        if (property == VTERM_PROP_ALTSCREEN)
            static_cast<TerminalTest *>(user)->alternateScreen = value->boolean != 0;
        return 1;
    };
    display = vterm_obtain_screen(emulator);
    vterm_screen_set_callbacks(display, &callbacks, this);
    vterm_screen_enable_altscreen(display, 1);
    vterm_screen_reset(display, 1);

    const winsize size = windowSize(lines, columns);
    if (openpty(&master, &slave, nullptr, nullptr, &size) != 0)
        ADD_FAILURE() << "no pseudo-terminal";
}

void TerminalTest::stop() {
    if (program != 0 && !ended()) {
        kill(program, SIGKILL);
        waitpid(program, nullptr, 0);
    }
    if (emulator) {
        vterm_free(emulator);
        close(slave);
        close(master);
    }
    emulator = nullptr;
    program = 0;
    alternateScreen = false;
    status.reset();
    replies.clear();
    output.clear();
}

RunResult TerminalTest::run(const Arguments &arguments, const Environment &environment, User user) {
    return runInPrivateRoot(directory / "root", arguments, environment, user);
}

void TerminalTest::press(std::string_view keys) {
    while (!keys.empty()) {
        const auto end = keys.front() == '<' ? keys.find('>', 2) : 0;
        ASSERT_NE(end, keys.npos) << "no end of the key in " << keys;
        const std::string key(keys.substr(0, end + 1));
        keys.remove_prefix(key.size());
        ASSERT_FALSE(ended()) << "the program ended before " << key << "; screen:\n" << screen();
        send(keyBytes(key));
        settle(key);
    }
}

// The bytes of one key in the notation of press().
std::string TerminalTest::keyBytes(const std::string &key) {
    if (key.size() == 1)
        return key;
    const std::string name = key.substr(1, key.size() - 2);
    for (const NamedKey &named : NAMED_KEYS) {
        if (named.name != name)
            continue;
        if (named.key != VTERM_KEY_NONE)
            vterm_keyboard_key(emulator, named.key, VTERM_MOD_NONE);
        return std::exchange(replies, {}) + std::string(named.bytes);
    }
    EXPECT_EQ(name.size(), 1) << "there is no key " << key;
    return name;
}

void TerminalTest::waitFor(const std::string &text) {
    const auto appeared = [&] {
        for (int row = 0; row < lines; row++) {
            if (rowText(row, false).find(text) != text.npos)
                return true;
        }
        return false;
    };
    waitUntil(appeared, "\"" + text + "\" does not appear");
    settle(text);
}

void TerminalTest::resize(int newLines, int newColumns) {
    lines = newLines;
    columns = newColumns;
    vterm_set_size(emulator, lines, columns);
    const winsize size = windowSize(lines, columns);
    ioctl(master, TIOCSWINSZ, &size); // the kernel sends SIGWINCH
    settle("the new size");
}

void TerminalTest::closeInput() {
    close(slave);
    close(master);
    slave = master = -1;
}

int TerminalTest::exitStatus() {
    waitUntil([&] { return ended() && !feed(0); }, "the program does not end");
    return status.value_or(-1);
}

// Feeds the emulator until `done`; past the time limit the test fails for `complaint`.
void TerminalTest::waitUntil(const std::function<bool()> &done, const std::string &complaint) {
    const auto deadline = std::chrono::steady_clock::now() + TIME_LIMIT;
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline) {
            ADD_FAILURE() << complaint << "; screen:\n" << screen();
            return;
        }
        feed(POLL_INTERVAL);
    }
}

// Waits until the program rests: it wants a key while none is left, or has ended, and then has no
// output left either. The order counts: a program that rests writes nothing more.
void TerminalTest::settle(const std::string &cause) {
    const auto rests = [&] {
        return (ended() || (!hasInput(slave, 0) && !hasSignal(program) && waitsForKey(program))) &&
               !feed(0);
    };
    waitUntil(rests, "the program does not come to rest after " + cause);
}

// Hands on what the program wrote within `wait` ms; false when that is nothing.
bool TerminalTest::feed(int wait) {
    char bytes[4096];
    const ssize_t length = hasInput(master, wait) ? read(master, bytes, sizeof bytes) : 0;
    if (length <= 0)
        return false;
    output.append(bytes, static_cast<std::size_t>(length));
    vterm_input_write(emulator, bytes, static_cast<std::size_t>(length));
    send(std::exchange(replies, {}));
    return true;
}

// One write, so that the bytes of a key arrive together.
void TerminalTest::send(const std::string &bytes) {
    if (write(master, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
        ADD_FAILURE() << "the terminal takes no input";
}

bool TerminalTest::ended() {
    int waitStatus = 0;
    if (!status && waitpid(program, &waitStatus, WNOHANG) == program)
        status = shellStatus(waitStatus);
    return status.has_value();
}

std::string TerminalTest::rows(int first, int last) const {
    std::string text;
    for (int row = first; row <= last; row++)
        text += rowText(row, true) + "\n";
    return text;
}

std::string TerminalTest::screen() const { return rows(0, lines - 1); }

std::pair<int, int> TerminalTest::cursor() const {
    VTermPos position;
    vterm_state_get_cursorpos(vterm_obtain_state(emulator), &position);
    return {position.row, position.col};
}

std::string TerminalTest::rowText(int row, bool marked) const {
    std::string text, mark;
    int end = columns;
    while (end > 0 && isBlank(cellAt(row, end - 1)))
        end--;
    for (int column = 0; column < end; column++) {
        const std::string next = marked ? markOf(cellAt(row, column).attrs) : "";
        if (next != mark) {
            text += mark.empty() ? "" : "}";
            text += next;
        }
        mark = next;
        text += cellText(row, column);
    }
    return text + (mark.empty() ? "" : "}");
}

VTermScreenCell TerminalTest::cellAt(int row, int column) const {
    VTermScreenCell cell;
    vterm_screen_get_cell(display, {row, column}, &cell);
    return cell;
}

// UTF-8; a cell that nothing was written to is a blank.
std::string TerminalTest::cellText(int row, int column) const {
    char text[VTERM_MAX_CHARS_PER_CELL * 4];
    const VTermRect cell{row, row + 1, column, column + 1};
    const std::size_t length = vterm_screen_get_text(display, text, sizeof text, cell);
    return length == 0 ? " " : std::string(text, length);
}
