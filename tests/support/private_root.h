// The real program in a private root: the folder "root" of the current directory, which the program
// takes for "/", so that its fixed paths are files of the test. Entering it takes root or a user
// namespace of one's own and, for a sanitizer, mounts.
#pragma once

#include <string>
#include <vector>

// Words "NAME=value" are settings of the environment. The others are arguments of scrconf, or of
// the program of /usr/bin that the first of them names.
using Words = std::vector<std::string>;

inline constexpr int STATUS_NO_PROGRAM = 127; // of chroot and unshare

enum class User { ROOT, NOBODY }; // who the program runs as, seen from inside

struct RunResult {
    int status = 0; // exit status as a shell gives it: 128 + n after signal n
    std::string output, errors;
};

// Runs a program without a terminal and with no input; after 30 s SIGALRM ends it. Its output goes
// through the files "output" and "errors" in the current directory; where a name there is a link
// into a missing folder, the descriptor is closed. STATUS_NO_PROGRAM: the root holds none.
RunResult runProgram(const Words &words, User user = User::ROOT);

// Turns a child process into the program, its descriptors as they are. Beside its settings its
// environment is TERM, LANG, HOME and the sanitizers' options; nothing is inherited.
[[noreturn]] void executeProgram(const Words &words, User user);

// The exit status of a wait status, as a shell gives it.
int shellStatus(int waitStatus);
