// Runs a program in a pseudo-terminal of 80 columns by 24 lines, types keys one by one and prints
// how each was answered:
//     bench_terminal ROOT KEYS PROGRAM [ARGUMENT...]
// ROOT becomes the program's root directory. In KEYS "D" stands for the down arrow, "E" for Enter
// and every other character for itself. Each line of the output gives the time in ms to the last
// byte of the answer and the number of its bytes; the first line is the answer to the start.
//
// The program is ended when the keys are used up. Exit status 1: it ended before.
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <string>
#include <string_view>

using Clock = std::chrono::steady_clock;

static constexpr int TERMINAL_REST = 50;     // ms without output: the answer is complete
static constexpr int TERMINAL_LIMIT = 20000; // ms that an answer may keep the terminal waiting
static constexpr winsize TERMINAL_SIZE = {24, 80, 0, 0};

struct Answer {
    std::size_t bytes = 0;
    double time = 0; // ms, from the cause to the last byte
    bool ended = false;
};

static Answer awaitAnswer(int terminal, Clock::time_point cause) {
    Answer answer;
    std::array<char, 65536> bytes;
    pollfd state = {terminal, POLLIN, 0};
    while (poll(&state, 1, answer.bytes == 0 ? TERMINAL_LIMIT : TERMINAL_REST) == 1) {
        const ssize_t count = read(terminal, bytes.data(), bytes.size());
        answer.ended = count <= 0; // a terminal that its program has left cannot be read
        if (answer.ended)
            break;
        answer.bytes += static_cast<std::size_t>(count);
        answer.time = std::chrono::duration<double, std::milli>(Clock::now() - cause).count();
    }
    return answer;
}

static std::string_view keyBytes(const char &key) {
    if (key == 'D')
        return "\033OB"; // in keypad mode
    return key == 'E' ? "\r" : std::string_view(&key, 1);
}

static Answer pressKey(int terminal, const char &key) {
    const std::string_view bytes = keyBytes(key);
    const auto cause = Clock::now();
    if (write(terminal, bytes.data(), bytes.size()) != std::ssize(bytes))
        return {0, 0, true};
    return awaitAnswer(terminal, cause);
}

[[noreturn]] static void execute(const char *root, char **arguments) {
    if (chroot(root) == 0 && chdir("/") == 0)
        execvp(arguments[0], arguments);
    std::perror(arguments[0]);
    _exit(127);
}

int main(int argc, char **argv) {
    if (argc < 4) {
        std::fprintf(stderr, "usage: %s ROOT KEYS PROGRAM [ARGUMENT...]\n", argv[0]);
        return 2;
    }
    int terminal = -1;
    const auto start = Clock::now();
    const pid_t program = forkpty(&terminal, nullptr, nullptr, &TERMINAL_SIZE);
    if (program < 0) {
        std::perror("forkpty");
        return 1;
    }
    if (program == 0)
        execute(argv[1], argv + 3);
    Answer answer = awaitAnswer(terminal, start);
    std::printf("%.3f %zu\n", answer.time, answer.bytes);
    std::string_view keys = argv[2];
    for (; !keys.empty() && !answer.ended; keys.remove_prefix(1)) {
        answer = pressKey(terminal, keys.front());
        std::printf("%.3f %zu\n", answer.time, answer.bytes);
    }
    if (!answer.ended)
        kill(program, SIGKILL);
    waitpid(program, nullptr, 0);
    return keys.empty() ? 0 : 1;
}
