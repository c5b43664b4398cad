#include "support/private_root.h"

#include <fcntl.h>
#include <grp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <iterator>

#include "support/temp_dir.h"

namespace fs = std::filesystem;

static constexpr unsigned RUN_LIMIT = 30; // s
static constexpr uid_t NOBODY_ID = 65534;
static constexpr int STATUS_NOT_ENTERED = 126, STATUS_NO_PROGRAM = 127;

// A folder of the machine that the root has as well: a sanitizer finds its options and the stack
// there.
static constexpr const char *LENT_FOLDER = "/proc/self";

Arguments programCommand = {"/usr/sbin/scrconf"};

// Leaks are no faults: what the program makes lives until it exits. A status of its own tells a
// sanitizer's report from the program's errors.
static constexpr const char *FIXED_SETTINGS[] = {
    "TERM=xterm-256color", "LANG=C.UTF-8", "HOME=/root", "ASAN_OPTIONS=detect_leaks=0:exitcode=99",
    "UBSAN_OPTIONS=exitcode=99"};

static void require(bool done, const char *step) {
    if (done)
        return;
    std::perror(step);
    _exit(STATUS_NOT_ENTERED);
}

// Moves this process into a user namespace where its user is `id`; until it executes a program it
// has all capabilities there.
static void enterUserNamespace(uid_t id) {
    const std::string inside = std::to_string(id) + " ";
    const std::string user = std::to_string(geteuid()), group = std::to_string(getegid());
    require(unshare(CLONE_NEWUSER) == 0, "unshare");
    writeFile("/proc/self/setgroups", "deny"); // or the kernel refuses the group's map
    writeFile("/proc/self/uid_map", inside + user + " 1");
    writeFile("/proc/self/gid_map", inside + group + " 1");
}

// Gives the root LENT_FOLDER until the process ends; false where the machine forbids mounts. In a
// plain chroot a namespace would not help, and would put what is outside of the chroot before the
// names of open files.
static bool lendFolder(const fs::path &root) {
    struct statx status = {};
    if (statx(AT_FDCWD, "/", 0, STATX_TYPE, &status) != 0 ||
        (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) == 0) {
        errno = EINVAL; // as a mount would set it
        return false;
    }
    return unshare(CLONE_NEWNS) == 0 &&
           mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount(LENT_FOLDER, (root / "proc/self").c_str(), nullptr, MS_BIND, nullptr) == 0;
}

// Where the machine forbids mounts the program runs without the folder, unless a sanitizer takes
// it.
void enterPrivateRoot(const fs::path &root, User user) {
    const uid_t id = user == User::ROOT ? 0 : NOBODY_ID;
    if (geteuid() != 0)
        enterUserNamespace(id);
    [[maybe_unused]] const bool lent = lendFolder(root);
#ifdef __SANITIZE_ADDRESS__
    require(lent, "mount");
#endif
    require(chroot(root.c_str()) == 0 && chdir("/") == 0, "chroot");
    if (geteuid() != id)
        require(setgroups(0, nullptr) == 0 && setgid(id) == 0 && setuid(id) == 0, "setuid");
}

static std::vector<char *> pointersTo(std::vector<std::string> &texts) {
    std::vector<char *> pointers;
    for (std::string &text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

// A descriptor whose file cannot be opened is closed.
static void redirect(int descriptor, const char *path) {
    const int file = open(path, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (file < 0 || dup2(file, descriptor) < 0)
        close(descriptor);
}

bool canEnterPrivateRoot() { // an empty root is entered, but holds no program
    fs::create_directories("root/proc/self");
    return runInPrivateRoot("root", {}, {}, User::ROOT).status == STATUS_NO_PROGRAM;
}

RunResult runInPrivateRoot(const fs::path &root, const Arguments &arguments,
                           const Settings &settings, User user) {
    const pid_t process = fork();
    if (process == 0) {
        redirect(STDIN_FILENO, "/dev/null");
        redirect(STDOUT_FILENO, "output");
        redirect(STDERR_FILENO, "errors");
        alarm(RUN_LIMIT); // outlives execve
        executeInPrivateRoot(root, arguments, settings, user);
    }
    int status = 0;
    waitpid(process, &status, 0);
    return {shellStatus(status), readFile("output"), readFile("errors")};
}

void executeInPrivateRoot(const fs::path &root, Arguments arguments, Settings settings, User user) {
    enterPrivateRoot(root, user);
    arguments.insert(arguments.begin(), programCommand.begin(), programCommand.end());
    settings.insert(settings.end(), std::begin(FIXED_SETTINGS), std::end(FIXED_SETTINGS));
    execve(arguments[0].c_str(), pointersTo(arguments).data(), pointersTo(settings).data());
    std::perror(arguments[0].c_str());
    _exit(STATUS_NO_PROGRAM);
}

int shellStatus(int waitStatus) {
    return WIFSIGNALED(waitStatus) ? 128 + WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus);
}
