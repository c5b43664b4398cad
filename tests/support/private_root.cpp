#include "support/private_root.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "support/files.h"

static constexpr unsigned RUN_LIMIT = 30; // s

// Leaks are no faults: what the program makes lives until it exits. A status of its own tells a
// sanitizer's report from the program's errors.
static const Words FIXED_SETTINGS = {"TERM=xterm-256color", "LANG=C.UTF-8", "HOME=/root",
                                     "ASAN_OPTIONS=detect_leaks=0:exitcode=99",
                                     "UBSAN_OPTIONS=exitcode=99"};

// The command that enters the root as this user. A sanitizer finds its options and the stack in
// /proc/self, which the root gets for as long as the process lives.
static Words enteringCommand(User user) {
    const std::string id = user == User::ROOT ? "0" : "65534";
    const bool isRoot = geteuid() == 0;
    Words command =
        isRoot ? Words{"/usr/sbin/chroot", "--userspec=" + id + ":" + id, "--groups=", "root"}
               : Words{"unshare", "--map-user=" + id, "--map-group=" + id, "--root=root"};
#ifdef __SANITIZE_ADDRESS__
    const Words lend = {
        "unshare", "--mount", isRoot ? "--mount" : "--map-root-user",
        "sh",      "-c",      "mount --bind /proc/$$ \"$0/proc/self\" && exec \"$@\"",
        "root"};
    command.insert(command.begin(), lend.begin(), lend.end());
#endif
    return command;
}

// A descriptor whose file cannot be opened is closed.
static void redirect(int descriptor, const char *path) {
    const int file = open(path, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (file < 0 || dup2(file, descriptor) < 0)
        close(descriptor);
}

RunResult runProgram(const Words &words, User user) {
    const pid_t process = fork();
    if (process == 0) {
        redirect(STDIN_FILENO, "/dev/null");
        redirect(STDOUT_FILENO, "output");
        redirect(STDERR_FILENO, "errors");
        alarm(RUN_LIMIT); // outlives execve
        executeProgram(words, user);
    }
    int status = 0;
    waitpid(process, &status, 0);
    return {shellStatus(status), readFile("output"), readFile("errors")};
}

void executeProgram(const Words &words, User user) {
    Words settings = FIXED_SETTINGS, command = enteringCommand(user), arguments;
    for (const std::string &word : words)
        (word.find('=') == word.npos ? arguments : settings).push_back(word);
    if (arguments.empty() || !arguments[0].starts_with("/usr/bin/"))
        command.push_back("/usr/sbin/scrconf");
    std::ranges::copy(arguments, std::back_inserter(command));
    clearenv();
    for (std::string &setting : settings)
        putenv(setting.data()); // of equal names the last one counts
    std::vector<char *> pointers;
    for (std::string &word : command)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    execvp(pointers[0], pointers.data());
    _exit(STATUS_NO_PROGRAM);
}

int shellStatus(int waitStatus) {
    return WIFSIGNALED(waitStatus) ? 128 + WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus);
}
