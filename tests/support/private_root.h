// The real program in a private root: a folder that the program takes for "/", so that its fixed
// paths are files of the test. Entering one takes root or a user namespace of one's own.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

using Arguments = std::vector<std::string>; // without the program's name, which is "scrconf"
using Environment = std::map<std::string, std::string>;

enum class User { ROOT, NOBODY }; // who the program runs as, seen from inside

struct RunResult {
    int status = 0; // exit status as a shell gives it: 128 + n after signal n
    std::string output;
    std::string errors;
};

// False on a machine that gives the tests neither root nor a user namespace.
bool canEnterPrivateRoot();

// Makes `root` a private root with the program and its data files and without a configuration.
// A failure is one of the running test.
void stagePrivateRoot(const std::filesystem::path &root);

// Runs the program without a terminal and with no input; one that runs on is ended by SIGALRM.
RunResult runInPrivateRoot(const std::filesystem::path &root, const Arguments &arguments,
                           const Environment &environment = {}, User user = User::ROOT);

// Turns a child process into the program, its descriptors as they are. Beside `environment` it gets
// TERM, LANG, HOME and the sanitizers' options; nothing is inherited.
[[noreturn]] void executeInPrivateRoot(const std::filesystem::path &root,
                                       const Arguments &arguments, const Environment &environment,
                                       User user = User::ROOT);

// The exit status of a wait status, as a shell gives it.
int shellStatus(int waitStatus);
