// What an unprivileged user, a terminal or an ordinary day does to a run.
#include <fcntl.h>
#include <grp.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <random>
#include <string_view>

#include "support/terminal.h"

namespace fs = std::filesystem;

static constexpr int TRIES = 10;
static constexpr uid_t NOBODY_ID = 65534;
static constexpr const char *CONFIG_TEXT = "LogFile /root's\nDriver one\n";

// Waits for an event on a name that begins with `name`.
static void awaitEvent(int watch, std::string_view name) {
    alignas(inotify_event) char events[4096];
    for (ssize_t size; (size = read(watch, events, sizeof events)) > 0;)
        for (char *at = events; at < events + size;) {
            const auto *event = reinterpret_cast<inotify_event *>(at);
            if (std::string_view(event->name).starts_with(name))
                return;
            at += sizeof *event + event->len;
        }
}

struct AttacksTest : TerminalTest {
    void SetUp() override { writeFile(config, CONFIG_TEXT); }
    int save(const Words &words = {}) {
        start(words);
        press("<Enter><Down><Down><Enter>");
        return ended() ? exitStatus() : -1;
    }
};

struct OtherUserTest : AttacksTest {
    void SetUp() override {
        AttacksTest::SetUp();
        if (geteuid() != 0)
            GTEST_SKIP() << "two users take root";
    }
    // Does `work` while nobody, the owner of "home", does `act` in the root's folder at the first
    // event of this kind on a name in `folder` that begins with `name`.
    void attack(const char *folder, std::uint32_t kind, const char *name, void (*act)() noexcept,
                const auto &work) {
        ASSERT_EQ(outputOf("chown -R 65534:65534 root/home 2>&1"), "");
        const int watch = inotify_init();
        ASSERT_GE(inotify_add_watch(watch, (root / folder).c_str(), kind), 0);
        const pid_t attacker = fork();
        if (attacker == 0) {
            alarm(30); // s
            if (chdir("root") != 0 || setgroups(0, nullptr) != 0 || setgid(NOBODY_ID) != 0 ||
                setuid(NOBODY_ID) != 0)
                _exit(1);
            awaitEvent(watch, name);
            act();
            _exit(0);
        }
        close(watch);
        work();
        int attackerStatus = -1;
        waitpid(attacker, &attackerStatus, 0);
        ASSERT_EQ(attackerStatus, 0) << "no attack";
    }
    const fs::path home = root / "home";
};

TEST_F(OtherUserTest, AFolderThatIsSwappedAmidTheSave) {
    for (int n = 0; n < TRIES; n++) {
        fs::remove_all(home);
        writeFile(home / "x11/Xconfig", "Driver nobody's\n");
        const auto swap = []() noexcept {
            rename("home/x11", "home/mine");
            fs::create_symlink("/etc/X11", "home/x11");
        };
        attack("etc/X11", IN_CREATE, "Xconfig.tmp", swap, [&] { save({"/home/x11/Xconfig"}); });
        ASSERT_TRUE(fs::is_symlink(home / "x11"));
        ASSERT_EQ(readFile(config), CONFIG_TEXT) << "try " << n;
    }
}

TEST_F(OtherUserTest, ADocumentWhoseNewVersionIsSwapped) {
    const fs::path secret = root / "etc/secret";
    for (int n = 0; n < TRIES; n++) {
        fs::remove_all(home);
        writeFile(secret, "root's");
        writeFile(home / "document", std::string(100'000, '\n'));
        const auto swap = []() noexcept {
            for (const auto &file : fs::directory_iterator("home"))
                if (file.path().filename().string().starts_with("document."))
                    rename("home/trap", file.path().c_str());
        };
        attack("home", IN_CLOSE_WRITE | IN_MODIFY, "document.", swap, [&] {
            chmod(secret.c_str(), 0600);
            fs::create_hard_link(secret, home / "trap");
            runProgram({"-l", "/home/document"});
        });
        ASSERT_EQ(outputOf("stat -c '%u %a' root/etc/secret"), "0 600\n") << "try " << n;
    }
}

// What others may open locks nobody out; the file of a save that runs does.
TEST_F(AttacksTest, ALockOfAnybody) {
    for (const char *name : {"", "Xconfig", "Xconfig.tmp"}) {
        const fs::path path = config.parent_path() / name;
        if (path == temporary)
            writeFile(temporary, "rest");
        const int other = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        ASSERT_EQ(flock(other, LOCK_EX), 0);
        EXPECT_EQ(save(), 0) << path;
        close(other);
    }
    const int other = open(temporary.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_EQ(flock(other, LOCK_EX), 0);
    EXPECT_EQ(save(), -1);
    EXPECT_EQ(rows(4, 4), "   │   Another save is running          │\n");
    close(other);
    press("<Enter><Enter>");
    EXPECT_EQ(exitStatus(), 0); // what a dead save has left is replaced
}

TEST_F(AttacksTest, ControlBytesNeverReachTheTerminal) {
    errorsToFile = false;
    const std::string control = "/\033[31m\x9b\xc2\x9b\177\u00e9\r/x";
    start({control});
    EXPECT_NE(screen().find("Cannot open the folder of /?[31m???\u00e9?/x: No such"), control.npos);
    writeFile(korvel / "scrconf/CardInfo", "Class x\nCard\033c\n");
    start({"-lt"});
    EXPECT_EQ(rows(0, 0), "  1. Card?c\n");
    start({"TERM=\033c"});
    EXPECT_EQ(rows(0, 0), "Error opening terminal: ?c.\n");
    EXPECT_EQ(exitStatus(), 1);
    EXPECT_EQ(runProgram({control}).errors, "\nFatal error:\nCannot open the folder of " + control +
                                                ": No such file or directory\n\n");
}

// Where a key is waited for, and where the terminal takes no output and so no message either.
TEST_F(AttacksTest, ASignalOrTheEndOfInputEndsTheRunAndGivesTheTerminalBack) {
    for (const int number : {0, SIGHUP, SIGINT, SIGQUIT, SIGTERM})
        for (const char *keys : {"", "<Enter>", "<Enter><Down><Enter><Enter>", "stuck"}) {
            const bool stuck = keys == std::string_view("stuck");
            hangsUp = number != 0;
            start();
            press(stuck ? "<Enter>" : keys);
            termios raw = {}, modes = {};
            tcgetattr(slave, &raw);
            if (stuck) {
                tcflow(slave, TCOOFF);
                type("\r\r");
                const std::string call = "/proc/" + std::to_string(program) + "/syscall";
                waitUntil(
                    [&] { return readFile(call).starts_with(std::to_string(SYS_write) + " "); },
                    "no write waits");
            }
            const auto from = std::chrono::steady_clock::now();
            if (number != 0)
                kill(program, number);
            else
                closeInput();
            waitUntil([&] { return ended(); }, "the run goes on");
            EXPECT_LT(std::chrono::steady_clock::now() - from, std::chrono::milliseconds(1400));
            EXPECT_EQ(exitStatus(), 1);
            tcgetattr(slave, &modes);
            EXPECT_TRUE(number == 0 || (!(raw.c_lflag & ICANON) && modes.c_lflag & ICANON &&
                                        modes.c_lflag & ECHO && modes.c_oflag & OPOST));
            const std::string why = number == 0
                                        ? "End of input"
                                        : std::string("Ended by a signal: ") + strsignal(number);
            EXPECT_EQ(readFile("errors"),
                      stuck && number != 0 ? "" : "\nFatal error:\n" + why + "\n\n");
        }
}

TEST_F(AttacksTest, AFileThatGrowsTooLargeIsAnErrorOfItsWrite) {
    const std::string before = CONFIG_TEXT + std::string(4000, '#');
    writeFile(config, before);
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small = {1000, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_EQ(save(), 1);
    EXPECT_EQ(readFile("errors"), "\nFatal error:\nCannot write new Xconfig /etc/X11/Xconfig.tmp: "
                                  "File too large\n\n");
    EXPECT_EQ(runProgram({"-l", "/etc/X11/Xconfig"}).errors,
              "cannot write file /etc/X11/Xconfig: File too large\n");
    EXPECT_EQ(runProgram({"-lh", "/page"}).errors, "cannot write file /page: File too large\n");
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(readFile(config), before);
}

TEST_F(AttacksTest, ARunThatWasStoppedIsPaintedAnew) {
    start();
    press("<Enter>");
    const std::string before = screen();
    termios raw = {}, cooked = {};
    tcgetattr(slave, &raw);
    kill(program, SIGSTOP);
    waitpid(program, nullptr, WUNTRACED);
    cooked = raw;
    cooked.c_lflag |= ICANON | ECHO;
    tcsetattr(slave, TCSANOW, &cooked); // as a shell does
    ASSERT_EQ(write(slave, "\033[2Jjunk", 8), 8);
    kill(program, SIGCONT);
    settle("the stop");
    EXPECT_EQ(screen(), before);
    tcgetattr(slave, &cooked);
    EXPECT_EQ(cooked.c_lflag, raw.c_lflag);
}

// Keys by chance, most of them with an effect. They cannot save: another save seems to run.
TEST_F(AttacksTest, AFloodOfKeys) {
    static constexpr int KEYS = 50'000, AT_ONCE = 100;
    static constexpr const char *COMMON[] = {"\033OA", "\033OA", "\033OA", "\033OA",
                                             "\033OB", "\r",     " ",      "\b"};
    const int lock = open(temporary.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    std::mt19937 random(1);
    for (int sent = 0; sent < KEYS;) {
        start();
        for (; !ended() && sent < KEYS; sent += AT_ONCE) {
            std::string keys;
            for (int n = 0; n < AT_ONCE; n++)
                keys += random() % 8 != 0 ? std::string(COMMON[random() % std::size(COMMON)])
                                          : std::string(1, static_cast<char>(random()));
            send(keys);
        }
        ASSERT_EQ(ended() ? exitStatus() : 0, 0) << screen();
    }
    close(lock);
    EXPECT_EQ(readFile(config), CONFIG_TEXT);
}
