// The real program in a private root: the folder "root" of the current directory, which the program
// takes for "/", so that its fixed paths are files of the test. Entering it takes root or a user
// namespace of one's own and, for a sanitizer, mounts.
#pragma once

#include <string>
#include <vector>

using Arguments = std::vector<std::string>; // of scrconf, or behind another program's path
using Settings = std::vector<std::string>;  // "NAME=value"

inline constexpr int STATUS_NO_PROGRAM = 127; // of chroot and unshare

enum class User { ROOT, NOBODY }; // who the program runs as, seen from inside

struct RunResult {
    int status = 0; // exit status as a shell gives it: 128 + n after signal n
    std::string output, errors;
};

// Runs a program without a terminal and with no input; after 30 s SIGALRM ends it. Its output goes
// through the files "output" and "errors" in the current directory; what stands there as a link
// that leads nowhere is closed.
RunResult runProgram(const Arguments &arguments, const Settings &settings = {},
                     User user = User::ROOT);

// Turns a child process into the program, its descriptors as they are. Beside `settings` its
// environment is TERM, LANG, HOME and the sanitizers' options; nothing is inherited.
[[noreturn]] void executeProgram(const Arguments &arguments, const Settings &settings, User user);

// The exit status of a wait status, as a shell gives it.
int shellStatus(int waitStatus);
