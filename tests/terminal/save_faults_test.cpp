// The save on a machine that fails under it: which file stands afterwards, and what is said.
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <set>

#include "support/terminal.h"

namespace fs = std::filesystem;

static constexpr int STATUS_KILLED = 128 + SIGKILL;
static constexpr const char *OLD_TEXT = "free text\nDriver one\nDriver two\nCard Two\n";
static constexpr const char *CALLS[] = {"/^open", "flock", "/stat", "/^unlink", "fcntl",
                                        "lseek",  "read",  "write", "/xattr",   "fchown",
                                        "fchmod", "fsync", "close", "/^link",   "/^rename"};

struct SaveFaultsTest : TerminalTest {
    ~SaveFaultsTest() override {
        for (const fs::path &folder : mounts)
            umount2(folder.c_str(), MNT_DETACH);
    }
    void SetUp() override {
        writeFile(korvel / "MonitorConfig/timings.vda", sampleFile("one-timing.vda"));
        writeFile(korvel / "scrconf/CardInfo", "Class one\nA card of that class\n: Extra line\n");
        writeFile(korvel / "scrconf/MouseInfo", "Mouse \"A pointing device\" Microsoft 2 /dev/m\n");
        writeFile(korvel / "DisplayConfig/one/config",
                  "Driver one\nModes\n640 480 8 60 25 a\n640 480 8 60 \"my timing\"\n");
    }
    // Leaves the highlight on "Save and Exit"; screen 0 was configured.
    void configure(const std::string &path) {
        start({path});
        press("<Enter><Enter><Enter><Enter><Down><Down>");
    }
    int save(const std::string &path) {
        configure(path);
        press("<Enter>");
        return exitStatus();
    }
    // Makes a folder of the root a file system of its own; false where that is not allowed.
    bool mountOn(const char *name, const char *options) {
        const fs::path folder = root / name;
        fs::create_directories(folder);
        if (unshare(CLONE_NEWNS) != 0 || // seen by this process and its children alone
            mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("none", folder.c_str(), "tmpfs", 0, options) != 0)
            return false;
        mounts.push_back(folder);
        return true;
    }
    // Removes what saves have kept of the file, which must be the old one.
    static void removeKept(const fs::path &file) {
        fs::path kept;
        for (int n = 1; kept = file.string() + ".~" + std::to_string(n) + "~", fs::exists(kept);
             n++) {
            EXPECT_EQ(readFile(kept), OLD_TEXT) << kept;
            fs::remove(kept);
        }
    }
    // Lets strace do `fault` to the process from now on, to calls on `paths` alone if there are
    // any. Where it may not, `traced` becomes false.
    void inject(pid_t process, const std::string &fault, const std::vector<std::string> &paths) {
        const std::string target = std::to_string(process), rule = "inject=" + fault;
        std::vector<const char *> command = {"strace", "-qq",        "-o", "trace",
                                             "-e",     rule.c_str(), "-p", target.c_str()};
        for (const std::string &path : paths)
            command.insert(command.end(), {"-P", path.c_str()});
        command.push_back(nullptr);
        tracer = fork();
        if (tracer == 0) {
            execvp(command[0], const_cast<char **>(command.data()));
            _exit(1);
        }
        const auto attached = [&] {
            return readFile("/proc/" + target + "/status").find("\nTracerPid:\t0\n") == target.npos;
        };
        waitUntil([&] { return attached() || waitpid(tracer, nullptr, WNOHANG) == tracer; },
                  "strace does not attach");
        traced = attached();
    }
    // The old or the new file stands, and the user is told which; `refused`: a notice told that
    // nothing was written. What is kept is the old file. False when the fault did not come to pass.
    bool checkOutcome(int result, bool refused, const fs::path &file, const std::string &newText) {
        waitpid(tracer, nullptr, 0);
        const std::string text = readFile(file), errors = readFile("errors");
        const bool isNew = result == STATUS_KILLED ? text == newText
                           : result == 0           ? !refused
                                                   : errors.find(" is in place, ") != errors.npos;
        EXPECT_EQ(text, isNew ? newText : OLD_TEXT) << errors;
        const bool kept = errors.empty() || errors.find("Xconfig.~1~\n") != errors.npos;
        EXPECT_TRUE(result == STATUS_KILLED || kept == (result == 0)) << errors;
        EXPECT_TRUE(result == 0 || result == 1 || result == STATUS_KILLED) << result;
        removeKept(file);
        return result == STATUS_KILLED || readFile("trace").find("(INJECTED)") != text.npos;
    }
    // Saves, or for a document updates it, with a fault; the exit status, 0 when a notice refused.
    // The update has no wait at which strace could attach: it is stopped before it starts, and the
    // faults are those of calls on the document's folder and the files in it.
    int attempt(const std::string &path, const std::string &fault, bool &refused) {
        if (path.ends_with("Xconfig")) {
            configure(path);
            inject(program, fault, {});
            press("<Enter>");
            refused = screen().find(" has changed since it was read") != std::string::npos;
            if (refused)
                stop();
            return refused ? 0 : exitStatus();
        }
        const pid_t process = fork();
        if (process == 0) {
            dup2(open("output", O_WRONLY | O_CREAT | O_TRUNC, 0666), STDOUT_FILENO);
            dup2(open("errors", O_WRONLY | O_CREAT | O_TRUNC, 0666), STDERR_FILENO);
            raise(SIGSTOP);
            executeProgram({"-l", path}, {}, User::ROOT);
        }
        waitpid(process, nullptr, WUNTRACED);
        std::vector<std::string> paths;
        for (const std::string &name : {std::string(), "." + std::to_string(process)})
            for (const fs::path &seen : {fs::path(path + name), root / (path + name).substr(1)})
                paths.insert(paths.end(), {seen, seen.parent_path()});
        inject(process, fault, paths);
        kill(process, SIGCONT);
        int waitStatus = 0;
        waitpid(process, &waitStatus, 0);
        return shellStatus(waitStatus);
    }
    // Lets each call of each kind fail in turn, from the first to the last that is made.
    void failEachCall(const std::string &path, const std::string &action) {
        const fs::path file = root / path.substr(1);
        const auto work = [&] {
            return path.ends_with("Xconfig") ? save(path) : runProgram({"-l", path}).status;
        };
        writeFile(file, OLD_TEXT);
        ASSERT_EQ(work(), 0);
        const std::string newText = readFile(file);
        int cases = 0;
        bool refused = false;
        for (const std::string call : CALLS)
            for (int n = 1; traced; n++, cases++) {
                const std::string fault = call + action + ":when=" + std::to_string(n);
                SCOPED_TRACE(fault);
                std::error_code otherFileSystem;
                for (const fs::path &rest : fs::directory_iterator(file.parent_path()))
                    fs::remove(rest);
                writeFile(file, OLD_TEXT);
                if (path.ends_with("Xconfig")) // the worst rest of a save
                    fs::create_hard_link(file, temporary, otherFileSystem);
                const int result = attempt(path, fault, refused);
                if (!checkOutcome(result, refused, file, newText))
                    break;
                writeFile(file, OLD_TEXT);
                EXPECT_EQ(work(), 0);
                EXPECT_EQ(readFile(file), newText);
                EXPECT_FALSE(fs::exists(temporary) || fs::exists(file.string() + ".scrconf"));
                removeKept(file);
            }
        if (!traced)
            GTEST_SKIP() << "no strace, or it may not trace: " << messages();
        EXPECT_GE(cases, path.ends_with("Xconfig") ? 60 : 15) << "calls are missing in CALLS";
    }

    std::vector<fs::path> mounts;
    pid_t tracer = 0;
    bool traced = true;
};

struct EachCallTest : SaveFaultsTest,
                      testing::WithParamInterface<std::tuple<const char *, const char *>> {};

TEST_P(EachCallTest, LeavesTheOldFileOrTheNewOne) {
    const auto [path, action] = GetParam();
    if (std::string_view(path).starts_with("/mnt") && !mountOn("mnt", ""))
        GTEST_SKIP() << "no mounts";
    failEachCall(path, action);
}

INSTANTIATE_TEST_SUITE_P(, EachCallTest,
                         testing::Combine(testing::Values("/etc/X11/Xconfig", "/mnt/Xconfig",
                                                          "/mif/document"),
                                          testing::Values(":error=EIO", ":signal=SIGKILL")));

TEST_F(SaveFaultsTest, ASignalWaitsForTheEndOfTheSave) {
    writeFile(config, OLD_TEXT);
    configure("/etc/X11/Xconfig");
    inject(program, "/^rename:signal=SIGTERM", {});
    if (!traced)
        GTEST_SKIP() << "no strace, or it may not trace: " << messages();
    press("<Enter>");
    EXPECT_EQ(exitStatus(), 0);
    EXPECT_NE(readFile(config), OLD_TEXT);
}

TEST_F(SaveFaultsTest, AFullAndAReadOnlyFileSystem) {
    if (!mountOn("mnt", "size=4k") || !mountOn("etc/X11", "size=4k")) // one page, for the old file
        GTEST_SKIP() << "no mounts";
    const auto check = [&](const std::string &path, const std::string &onFull,
                           const std::string &onReadOnly) {
        const fs::path file = root / path.substr(1), folder = file.parent_path();
        const auto remount = [&](unsigned long flags, const char *options) {
            EXPECT_EQ(mount(nullptr, folder.c_str(), nullptr, MS_REMOUNT | flags, options), 0);
        };
        writeFile(file, OLD_TEXT);
        for (const bool full : {true, false}) {
            if (!full)
                remount(MS_RDONLY, "size=64k");
            EXPECT_EQ(save(path), 1);
            EXPECT_EQ(readFile("errors"),
                      "\nFatal error:\n" + (full ? onFull : onReadOnly) + "\n\n");
            EXPECT_EQ(readFile(file), OLD_TEXT);
            const bool left = fs::exists(temporary);
            EXPECT_TRUE(!left || fs::status(temporary).permissions() == fs::perms(0600));
        }
        remount(0, "size=64k");
        EXPECT_EQ(save(path), 0);
        removeKept(file);
        EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1);
    };
    check("/etc/X11/Xconfig",
          "Cannot write new Xconfig /etc/X11/Xconfig.tmp: No space left on device",
          "Cannot open new Xconfig /etc/X11/Xconfig.tmp");
    check("/mnt/Xconfig", "Cannot install new Xconfig /mnt/Xconfig: No space left on device",
          "Cannot keep the old Xconfig /mnt/Xconfig: Read-only file system");
}

// At each allocation from the start of a run to the end of its save.
TEST_F(SaveFaultsTest, MemoryRunsOut) {
    fs::copy_file(SCRCONF_SCARCE_MEMORY, root / "usr/sbin/scrconf",
                  fs::copy_options::overwrite_existing);
    writeFile(config, OLD_TEXT);
    writeFile(root / "tmp/document", OLD_TEXT);
    const auto runCommand = [&](const fs::path &file, const Settings &settings) {
        if (file != config)
            return runProgram({"-l", "/tmp/document"}, settings);
        start({}, settings);
        send("\r\r\r\r\033OB\033OB\r"); // a card, its first mode, the save
        return RunResult{exitStatus(), "", readFile("errors")};
    };
    std::set<std::string> errors;
    for (const fs::path &file : {config, root / "tmp/document"}) {
        for (int n = 1; !HasFailure(); n++) {
            SCOPED_TRACE(n);
            const RunResult result = runCommand(file, {"SCARCE_MEMORY=" + std::to_string(n)});
            if (result.status == 0)
                break;
            EXPECT_EQ(result.status, 1);
            EXPECT_EQ(readFile(file), OLD_TEXT);
            removeKept(file);
            errors.insert(result.errors);
        }
        EXPECT_NE(readFile(file), OLD_TEXT);
    }
    EXPECT_EQ(errors,
              (std::set<std::string>{"\nFatal error:\nOut of memory\n\n",
                                     "\nFatal error:\ncould not allocate screen->card\n\n"}));
}
