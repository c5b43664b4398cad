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
        errorsToFile = true;
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
    // Lets each call of each kind fail in turn, from the first to the last that `attempt` makes; it
    // tells whether the fault came to pass.
    void failEachCall(const char *action, int least,
                      const std::function<bool(const std::string &)> &attempt) {
        int cases = 0;
        for (const std::string call : CALLS)
            for (int n = 1; traced; n++, cases++) {
                const std::string fault = call + action + ":when=" + std::to_string(n);
                SCOPED_TRACE(fault);
                if (!attempt(fault))
                    break;
            }
        if (!traced)
            GTEST_SKIP() << "no strace, or it may not trace: " << messages();
        EXPECT_GE(cases, least) << "calls are missing in CALLS";
    }
    void failEachCallOfSave(const std::string &path, const char *action) {
        const fs::path file = root / path.substr(1);
        writeFile(file, OLD_TEXT);
        ASSERT_EQ(save(path), 0);
        const std::string newText = readFile(file);
        failEachCall(action, 60, [&](const std::string &fault) {
            std::error_code otherFileSystem;
            writeFile(file, OLD_TEXT);
            fs::create_hard_link(file, temporary, otherFileSystem); // the worst rest of a save
            configure(path);
            inject(program, fault, {});
            press("<Enter>");
            const bool changed =
                screen().find(" has changed since it was read") != std::string::npos;
            if (changed)
                stop();
            if (!checkOutcome(changed ? 0 : exitStatus(), changed, file, newText))
                return false;
            EXPECT_EQ(save(path), 0);
            EXPECT_EQ(readFile(file), newText);
            EXPECT_FALSE(fs::exists(temporary) || fs::exists(file.string() + ".scrconf"));
            removeKept(file);
            return true;
        });
    }
    // The command has no wait at which it could be attached to: it is stopped before it starts, and
    // the faults are those of calls on the document's folder and the files in it.
    void failEachCallOfUpdate(const char *action) {
        const Arguments arguments = {"-l", "/mif/document"};
        const fs::path document = root / "mif/document";
        writeFile(document, OLD_TEXT);
        ASSERT_EQ(run(arguments).status, 0);
        const std::string newText = readFile(document);
        failEachCall(action, 15, [&](const std::string &fault) {
            fs::remove_all(root / "mif");
            writeFile(document, OLD_TEXT);
            const pid_t process = fork();
            if (process == 0) {
                dup2(open("output", O_WRONLY | O_CREAT | O_TRUNC, 0666), STDOUT_FILENO);
                dup2(open("errors", O_WRONLY | O_CREAT | O_TRUNC, 0666), STDERR_FILENO);
                raise(SIGSTOP);
                executeInPrivateRoot("root", arguments, {}, User::ROOT);
            }
            waitpid(process, nullptr, WUNTRACED);
            std::vector<std::string> paths;
            const std::string names[] = {"", "/document", "/document." + std::to_string(process)};
            for (const std::string &name : names) // seen from inside, and through descriptors
                paths.insert(paths.end(), {"/mif" + name, (root / "mif").string() + name});
            inject(process, fault, paths);
            kill(process, SIGCONT);
            int waitStatus = 0;
            waitpid(process, &waitStatus, 0);
            if (!checkOutcome(shellStatus(waitStatus), false, document, newText))
                return false;
            writeFile(document, OLD_TEXT);
            EXPECT_EQ(run(arguments).status, 0);
            EXPECT_EQ(readFile(document), newText);
            return true;
        });
    }

    std::vector<fs::path> mounts;
    pid_t tracer = 0;
    bool traced = true;
};

TEST_F(SaveFaultsTest, EachCallOfACatalogueFails) { failEachCallOfUpdate(":error=EIO"); }

TEST_F(SaveFaultsTest, KilledAtEachCallOfACatalogue) { failEachCallOfUpdate(":signal=SIGKILL"); }

TEST_F(SaveFaultsTest, EachCallFails) { failEachCallOfSave("/etc/X11/Xconfig", ":error=EIO"); }

TEST_F(SaveFaultsTest, KilledAtEachCall) {
    failEachCallOfSave("/etc/X11/Xconfig", ":signal=SIGKILL");
}

TEST_F(SaveFaultsTest, EachCallFailsAcrossFileSystems) {
    if (!mountOn("mnt", ""))
        GTEST_SKIP() << "no mounts";
    failEachCallOfSave("/mnt/Xconfig", ":error=EIO");
}

TEST_F(SaveFaultsTest, KilledAtEachCallAcrossFileSystems) {
    if (!mountOn("mnt", ""))
        GTEST_SKIP() << "no mounts";
    failEachCallOfSave("/mnt/Xconfig", ":signal=SIGKILL");
}

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

// Whatever has the temporary file's name is never followed and never opened.
TEST_F(SaveFaultsTest, ATakenTemporaryName) {
    const fs::path other = root / "tmp/other";
    const std::function<void()> obstacles[] = {
        [&] { fs::create_hard_link(config, temporary); },
        [&] { fs::create_symlink("/tmp/other", temporary); },
        [&] { fs::create_symlink("Xconfig", temporary); },
        [&] { ASSERT_EQ(mkfifo(temporary.c_str(), 0600), 0); },
        [&] { fs::create_directory(temporary); },
    };
    writeFile(other, OLD_TEXT);
    for (const auto &obstruct : obstacles) {
        writeFile(config, OLD_TEXT);
        obstruct();
        const bool folder = fs::is_directory(temporary);
        EXPECT_EQ(save("/etc/X11/Xconfig"), folder ? 1 : 0);
        EXPECT_EQ(readFile("errors").starts_with("\nFatal error:\nCannot open new Xconfig "
                                                 "/etc/X11/Xconfig.tmp\n\n"),
                  folder);
        EXPECT_EQ(readFile(config) == OLD_TEXT, folder);
        EXPECT_EQ(readFile(other), OLD_TEXT);
        EXPECT_EQ(fs::exists(fs::symlink_status(temporary)), folder);
    }
    fs::remove(temporary);
    fs::remove(config);
    fs::create_symlink("/tmp/other", config); // that name's turn: the link is replaced
    EXPECT_EQ(save("/etc/X11/Xconfig"), 0);
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(config)));
    EXPECT_EQ(readFile(other), OLD_TEXT);
}

// At each allocation from the start of a run to the end of its save.
TEST_F(SaveFaultsTest, MemoryRunsOut) {
    fs::copy_file(SCRCONF_SCARCE_MEMORY, root / "usr/sbin/scrconf",
                  fs::copy_options::overwrite_existing);
    writeFile(config, OLD_TEXT);
    writeFile(root / "tmp/document", OLD_TEXT);
    const auto runCommand = [&](const fs::path &file, const Settings &settings) {
        if (file != config)
            return run({"-l", "/tmp/document"}, settings);
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
