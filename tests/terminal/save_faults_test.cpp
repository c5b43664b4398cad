// The save on a machine that fails under it: which file stands afterwards, and what is said.
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <numeric>
#include <regex>
#include <set>
#include <sstream>

#include "support/terminal.h"

namespace fs = std::filesystem;

static constexpr int STATUS_KILLED = 128 + SIGKILL;
static constexpr const char *OLD_TEXT = "free text\nDriver one\nDriver two\nCard Two\n";
static constexpr const char *CALLS[] = {"/^open", "flock", "/stat", "/^unlink", "fcntl",
                                        "lseek",  "read",  "write", "/xattr",   "fchown",
                                        "fchmod", "fsync", "close", "/^link",   "/^rename"};

struct SaveFaultsTest : TerminalTest {
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
    // Removes what saves have kept of the file, which must be the old one.
    static void removeKept(const fs::path &file) {
        fs::path kept;
        for (int n = 1; fs::exists(kept = file.string() + ".~" + std::to_string(n) + "~"); n++) {
            EXPECT_EQ(readFile(kept), OLD_TEXT) << kept;
            fs::remove(kept);
        }
    }
    // Lets strace do `fault` to the program from now on. Where it may not, `traced` becomes false.
    void inject(const std::string &fault) {
        const std::string target = std::to_string(program), rule = "inject=" + fault;
        fs::remove("trace");
        tracer = fork();
        if (tracer == 0) {
            execlp("strace", "strace", "-qq", "-o", "trace", "-e", rule.c_str(), "-p",
                   target.c_str(), nullptr);
            _exit(1);
        }
        // strace writes down the call in which the program waits as soon as it traces.
        waitUntil([&] { return hasTrace("(") || waitpid(tracer, nullptr, WNOHANG) == tracer; },
                  "strace does not attach");
        traced = hasTrace("(");
    }
    static bool hasTrace(const char *text) {
        return readFile("trace").find(text) != std::string::npos;
    }

    pid_t tracer = 0;
    bool traced = true;
};

struct EachCallTest : SaveFaultsTest,
                      testing::WithParamInterface<std::tuple<const char *, const char *>> {
    // Saves with a fault; the exit status, -1 when a notice tells that nothing was written.
    int saveWith(const std::string &fault) {
        configure(path);
        inject(fault);
        press("<Enter>");
        if (screen().find(" has changed since it was read") == std::string::npos)
            return exitStatus();
        stop();
        return -1;
    }
    // The old or the new file stands, and the user is told which; what is kept is the old one.
    void checkOutcome(int result) {
        const std::string text = readFile(file), errors = readFile("errors");
        const bool isNew = result == STATUS_KILLED
                               ? text == newText
                               : result == 0 || errors.find(" is in place, ") != errors.npos;
        EXPECT_EQ(text, isNew ? newText : OLD_TEXT) << errors;
        const bool kept = errors.empty() || errors.find("Xconfig.~1~\n") != errors.npos;
        EXPECT_TRUE(result == STATUS_KILLED || (result <= 1 && kept == (result <= 0))) << errors;
        removeKept(file);
        std::istringstream stream(
            std::regex_replace(errors, std::regex(path + "(?!.tmp)"), "FILE"));
        for (std::string line; std::getline(stream, line);)
            told.insert(line + "\n");
    }
    // False when the fault did not come to pass. The next run finds no trace of it.
    bool failOneCall(const std::string &fault) {
        SCOPED_TRACE(fault);
        for (const fs::path &rest : fs::directory_iterator(file.parent_path()))
            fs::remove(rest);
        writeFile(file, OLD_TEXT);
        if (temporary.parent_path() == file.parent_path())
            fs::create_hard_link(file, temporary); // the worst rest of a save
        const int result = saveWith(fault);
        waitpid(tracer, nullptr, 0);
        checkOutcome(result);
        writeFile(file, OLD_TEXT);
        EXPECT_EQ(save(path), 0);
        EXPECT_EQ(readFile(file), newText);
        EXPECT_FALSE(fs::exists(temporary) || fs::exists(file.string() + ".scrconf"));
        removeKept(file);
        return result == STATUS_KILLED || hasTrace("(INJECTED)");
    }

    const std::string path = std::get<0>(GetParam()), action = std::get<1>(GetParam());
    const fs::path file = root / path.substr(1);
    std::string newText;
    std::set<std::string> told; // the lines of all errors
};

// Each call of each kind fails in turn, from the first to the last that is made.
TEST_P(EachCallTest, LeavesTheOldFileOrTheNewOne) {
    writeFile(file, OLD_TEXT);
    ASSERT_EQ(save(path), 0);
    newText = readFile(file);
    for (const std::string call : CALLS)
        for (int n = 1; traced && failOneCall(call + action + ":when=" + std::to_string(n));)
            n++;
    if (!traced)
        GTEST_SKIP() << "no strace, or it may not trace: " << messages();
    if (action == ":error=EIO") {
        EXPECT_EQ(std::accumulate(told.begin(), told.end(), std::string()),
                  sampleFile("save.errors"));
    }
}

INSTANTIATE_TEST_SUITE_P(, EachCallTest,
                         testing::Combine(testing::Values("/etc/X11/Xconfig", "/other/Xconfig"),
                                          testing::Values(":error=EIO", ":signal=SIGKILL")));

TEST_F(SaveFaultsTest, ASignalWaitsForTheEndOfTheSave) {
    writeFile(config, OLD_TEXT);
    configure("/etc/X11/Xconfig");
    inject("/^rename:signal=SIGTERM");
    if (!traced)
        GTEST_SKIP() << "no strace, or it may not trace: " << messages();
    press("<Enter>");
    EXPECT_EQ(exitStatus(), 0);
    waitpid(tracer, nullptr, 0);
    EXPECT_TRUE(hasTrace("rename")); // the rule's call
    EXPECT_NE(readFile(config), OLD_TEXT);
}

// At each allocation from the start of a run to the end of its save.
TEST_F(SaveFaultsTest, MemoryRunsOut) {
    fs::copy_file(SCRCONF_SCARCE_MEMORY, root / "usr/sbin/scrconf",
                  fs::copy_options::overwrite_existing);
    writeFile(config, OLD_TEXT);
    std::set<std::string> errors;
    for (int n = 1; !HasFailure(); n++) {
        SCOPED_TRACE(n);
        start({"SCARCE_MEMORY=" + std::to_string(n)});
        send("\r\r\r\r\033OB\033OB\r"); // a card, its first mode, the save
        if (exitStatus() == 0)
            break;
        EXPECT_EQ(exitStatus(), 1);
        EXPECT_EQ(readFile(config), OLD_TEXT);
        removeKept(config);
        errors.insert(readFile("errors"));
    }
    EXPECT_NE(readFile(config), OLD_TEXT);
    EXPECT_EQ(errors,
              (std::set<std::string>{"\nFatal error:\nOut of memory\n\n",
                                     "\nFatal error:\ncould not allocate screen->card\n\n"}));
}
