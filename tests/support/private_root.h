// The real program in a private root: a folder that the program takes for "/", so that its fixed
// paths are files of the test. Entering one takes root or a user namespace of one's own.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

using Arguments = std::vector<std::string>; // without the program's name, which is its path
using Settings = std::vector<std::string>;  // "NAME=value"

// What is executed, before the arguments: the program, and before it a tool that runs it.
extern Arguments programCommand;

enum class User { ROOT, NOBODY }; // who the program runs as, seen from inside

struct RunResult {
    int status = 0; // exit status as a shell gives it: 128 + n after signal n
    std::string output;
    std::string errors;
};

// False on a machine that gives the tests neither root nor a user namespace or, where a sanitizer
// takes it, no mounts. The root must hold no program yet.
bool canEnterPrivateRoot();

// Makes the private root this process's own and the user its user.
void enterPrivateRoot(const std::filesystem::path &root, User user);

// Runs the program without a terminal and with no input; after 30 s SIGALRM ends it. Its output
// goes through the files "output" and "errors" in the current directory; what stands there as a
// link that leads nowhere is closed.
RunResult runInPrivateRoot(const std::filesystem::path &root, const Arguments &arguments,
                           const Settings &settings, User user);

// Turns a child process into the program, its descriptors as they are. Beside `settings` its
// environment is TERM, LANG, HOME and the sanitizers' options; nothing is inherited.
[[noreturn]] void executeInPrivateRoot(const std::filesystem::path &root, Arguments arguments,
                                       Settings settings, User user);

// Does `act` in the private root in a process of its own, which ends with it.
template <typename Act>
pid_t forkInPrivateRoot(const std::filesystem::path &root, User user, Act act) {
    const pid_t process = fork();
    if (process != 0)
        return process;
    enterPrivateRoot(root, user);
    act();
    _exit(0);
}

// The exit status of a wait status, as a shell gives it.
int shellStatus(int waitStatus);
