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
#include <cstdlib>
#include <map>

static constexpr auto TIME_LIMIT = std::chrono::seconds(30);
static constexpr int POLL_INTERVAL = 2; // ms, between two looks at a program that works
static constexpr const char *STAGE_COMMAND =
    "'" SCRCONF_SOURCE_DIR "/tools/stage-root' '" SCRCONF_PROGRAM "' root";

static const std::map<std::string, std::string> NAMED_KEYS = {
    {"<Up>", "\033OA"}, {"<Down>", "\033OB"}, // in keypad mode
    {"<Enter>", "\r"},  {"<Esc>", "\033"},    {"<Space>", " "}, {"<Erase>", "\b"}};
static constexpr const char *KEYPAD_MODE = "\033[?1h"; // not on a Linux console

// Of a terminal this also makes the kernel deliver what the other side has written before.
static bool hasInput(int file, int wait) {
    pollfd state{file, POLLIN, 0};
    return poll(&state, 1, wait) == 1 && (state.revents & POLLIN);
}

// True when the process sleeps in a ppoll without a time limit, as the program does for a key.
static bool waitsForKey(pid_t process) {
    const std::string state = readFile("/proc/" + std::to_string(process) + "/syscall");
    long call = -1;
    unsigned long long limit = 0;
    return std::sscanf(state.c_str(), "%ld %*x %*x %llx", &call, &limit) == 2 && // or "running"
           call == SYS_ppoll && limit == 0;
}

// True when a signal is on its way to the process: it still looks asleep then.
static bool hasSignal(pid_t process) {
    const std::string state = readFile("/proc/" + std::to_string(process) + "/status");
    return state.find("ShdPnd:\t0000000000000000\n") == state.npos;
}

static std::string markAt(VTermScreen *display, VTermPos at) {
    VTermScreenCell cell;
    vterm_screen_get_cell(display, at, &cell);
    if (cell.attrs.bold)
        return cell.attrs.reverse ? "{br:" : "{b:";
    return cell.attrs.reverse ? "{r:" : "";
}

static std::string rowText(VTermScreen *display, int row, int columns) {
    std::string text, mark;
    for (int column = 0; column < columns; column++) {
        const std::string next = markAt(display, {row, column});
        if (next != mark)
            text += (mark.empty() ? "" : "}") + next;
        mark = next;
        char cell[VTERM_MAX_CHARS_PER_CELL * 4]; // UTF-8
        const std::size_t size =
            vterm_screen_get_text(display, cell, sizeof cell, {row, row + 1, column, column + 1});
        text += size == 0 ? " " : std::string(cell, size); // also behind a wide character
    }
    text += mark.empty() ? "" : "}";
    return text.erase(text.find_last_not_of(' ') + 1);
}

TerminalTest::TerminalTest() {
    const auto stage = [this] {
        if (access("/dev/pts/ptmx", F_OK) != 0 || access("/proc/self/stat", F_OK) != 0)
            GTEST_SKIP() << "a terminal takes /dev/pts and /proc";
        std::filesystem::create_directories("root/proc/self");
        if (runProgram({}).status != STATUS_NO_PROGRAM) // which tells that the root was entered
            GTEST_SKIP() << "no private root: " << readFile("errors");
        ASSERT_EQ(std::system(STAGE_COMMAND), 0) << messages();
    };
    stage();
}

TerminalTest::~TerminalTest() { stop(); }

void TerminalTest::start(const Words &words) {
    stop();
    emulator.reset(vterm_new(lines, columns));
    vterm_set_utf8(emulator.get(), 1);
    VTermScreen *display = vterm_obtain_screen(emulator.get());
    vterm_screen_enable_altscreen(display, 1);
    vterm_screen_reset(display, 1);
    const winsize size{lines, columns, 0, 0};
    ASSERT_EQ(openpty(&master, &slave, nullptr, nullptr, &size), 0) << "no pseudo-terminal";
    program = fork();
    if (program == 0) {
        close(master);
        login_tty(slave);
        if (errorsToFile)
            dup2(open("errors", O_WRONLY | O_CREAT | O_TRUNC, 0666), STDERR_FILENO);
        std::signal(SIGHUP, hangsUp ? SIG_DFL : SIG_IGN);
        for (const int number : {SIGINT, SIGQUIT})
            std::signal(number, SIG_DFL); // a shell's background job ignores them
        executeProgram(words, User::ROOT);
    }
    settle("the start");
}

void TerminalTest::stop() {
    if (program != 0 && !ended()) {
        kill(program, SIGKILL);
        waitpid(program, nullptr, 0);
    }
    closeInput();
    program = 0;
    status.reset();
    output.clear();
}

void TerminalTest::press(std::string_view keys) {
    while (!keys.empty()) {
        std::string key(keys.substr(0, keys[0] == '<' ? keys.find('>') + 1 : 1));
        keys.remove_prefix(key.size());
        int times = 1;
        if (const auto star = key.find('*'); star != key.npos && key.size() > 1) {
            times = std::atoi(key.c_str() + star + 1);
            key.replace(star, key.npos, ">");
        }
        std::string bytes = key.size() == 1 ? key : NAMED_KEYS.at(key);
        if (bytes.size() == 3 && output.find(KEYPAD_MODE) == output.npos)
            bytes[1] = '[';
        for (; times > 0; times--) {
            ASSERT_FALSE(ended()) << "the program ended before " << key << "; screen:\n"
                                  << screen();
            send(bytes);
        }
    }
}

void TerminalTest::send(const std::string &bytes) {
    type(bytes);
    settle(bytes);
}

void TerminalTest::type(const std::string &bytes) {
    ASSERT_EQ(write(master, bytes.data(), bytes.size()), std::ssize(bytes));
}

void TerminalTest::resize(unsigned short newLines, unsigned short newColumns) {
    lines = newLines;
    columns = newColumns;
    vterm_set_size(emulator.get(), lines, columns);
    const winsize size{lines, columns, 0, 0};
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
    vterm_input_write(emulator.get(), bytes, static_cast<std::size_t>(length));
    return true;
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
        text += rowText(vterm_obtain_screen(emulator.get()), row, columns) + "\n";
    return text;
}

std::string TerminalTest::screen() const { return rows(0, lines - 1); }

std::pair<int, int> TerminalTest::cursor() const {
    VTermPos position;
    vterm_state_get_cursorpos(vterm_obtain_state(emulator.get()), &position);
    return {position.row, position.col};
}
