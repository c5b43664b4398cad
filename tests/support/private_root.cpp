#include "support/private_root.h"

#include <fcntl.h>
#include <grp.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <functional>

#include "support/temp_dir.h"

namespace fs = std::filesystem;

static constexpr unsigned RUN_LIMIT = 30; // s
static constexpr uid_t NOBODY_ID = 65534;
static constexpr int STATUS_NOT_STARTED = 127;

// Leaks are no faults: what the program makes lives until it exits. A status of its own tells a
// sanitizer's report from the program's errors.
static const Environment DEFAULT_ENVIRONMENT = {
    {"TERM", "xterm-256color"},
    {"LANG", "C.UTF-8"},
    {"HOME", "/root"},
    {"ASAN_OPTIONS", "detect_leaks=0:exitcode=99"},
    {"UBSAN_OPTIONS", "exitcode=99"},
};

static void require(bool done, const char *step) {
    if (done)
        return;
    std::perror(step);
    _exit(STATUS_NOT_STARTED);
}

// Moves this process into a user namespace where its user is `id`; until it executes a program it
// has all capabilities there.
static void enterUserNamespace(uid_t id) {
    const uid_t user = geteuid();
    const gid_t group = getegid();
    require(unshare(CLONE_NEWUSER) == 0, "unshare");
    writeFile("/proc/self/setgroups", "deny"); // or the kernel refuses the group's map
    writeFile("/proc/self/uid_map", std::to_string(id) + " " + std::to_string(user) + " 1");
    writeFile("/proc/self/gid_map", std::to_string(id) + " " + std::to_string(group) + " 1");
    require(getuid() == id && getgid() == id, "uid_map");
}

// Shows this process its own folder of /proc, where a sanitizer finds its options and the stack.
// Where the machine forbids mounts the program runs without.
static void mountOwnProcess(const fs::path &root) {
    if (unshare(CLONE_NEWNS) == 0 && // the mount ends with the process
        mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0)
        mount("/proc/self", (root / "proc/self").c_str(), nullptr, MS_BIND, nullptr);
}

static void enterPrivateRoot(const fs::path &root, User user) {
    const uid_t id = user == User::ROOT ? 0 : NOBODY_ID;
    if (geteuid() != 0)
        enterUserNamespace(id);
    mountOwnProcess(root);
    require(chroot(root.c_str()) == 0 && chdir("/") == 0, "chroot");
    if (geteuid() != id)
        require(setgroups(0, nullptr) == 0 && setgid(id) == 0 && setuid(id) == 0, "setuid");
}

// With no `environment` the program gets this process's own.
[[noreturn]] static void execute(const std::string &program, Arguments arguments,
                                 Arguments environment) {
    arguments.insert(arguments.begin(), fs::path(program).filename());
    std::vector<char *> pointers, settings;
    for (std::string &argument : arguments)
        pointers.push_back(argument.data());
    for (std::string &setting : environment)
        settings.push_back(setting.data());
    pointers.push_back(nullptr);
    settings.push_back(nullptr);
    execve(program.c_str(), pointers.data(), environment.empty() ? environ : settings.data());
    std::perror(program.c_str());
    _exit(STATUS_NOT_STARTED);
}

static std::string readAll(int file) {
    std::string text(static_cast<std::size_t>(lseek(file, 0, SEEK_END)), '\0');
    const ssize_t length = pread(file, text.data(), text.size(), 0);
    close(file);
    text.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return text;
}

// Runs `child`, which does not return, in a process of its own with no input.
static RunResult runChild(const std::function<void()> &child) {
    const int output = memfd_create("output", MFD_CLOEXEC);
    const int errors = memfd_create("errors", MFD_CLOEXEC);
    const pid_t process = fork();
    if (process == 0) {
        dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
        dup2(output, STDOUT_FILENO);
        dup2(errors, STDERR_FILENO);
        alarm(RUN_LIMIT); // outlives execve
        child();
    }
    int status = 0;
    waitpid(process, &status, 0);
    return {shellStatus(status), readAll(output), readAll(errors)};
}

int shellStatus(int waitStatus) {
    return WIFSIGNALED(waitStatus) ? 128 + WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus);
}

bool canEnterPrivateRoot() {
    const auto enter = [] {
        enterPrivateRoot("/", User::ROOT);
        _exit(0);
    };
    return runChild(enter).status == 0;
}

void stagePrivateRoot(const fs::path &root) {
    const auto stage = [&] {
        execute(SCRCONF_SOURCE_DIR "/tools/stage-root", {SCRCONF_PROGRAM, root}, {});
    };
    const RunResult result = runChild(stage);
    ASSERT_EQ(result.status, 0) << result.errors;
    fs::create_directories(root / "proc/self");
}

void executeInPrivateRoot(const fs::path &root, const Arguments &arguments,
                          const Environment &environment, User user) {
    Environment all = environment;
    all.insert(DEFAULT_ENVIRONMENT.begin(), DEFAULT_ENVIRONMENT.end());
    Arguments settings;
    for (const auto &[name, value] : all)
        settings.push_back(name + "=" + value);
    enterPrivateRoot(root, user);
    execute("/usr/sbin/scrconf", arguments, settings);
}

RunResult runInPrivateRoot(const fs::path &root, const Arguments &arguments,
                           const Environment &environment, User user) {
    return runChild([&] { executeInPrivateRoot(root, arguments, environment, user); });
}
