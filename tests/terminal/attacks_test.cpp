// What an unprivileged user, a terminal or an ordinary day does to a run.
#include <fcntl.h>
#include <grp.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <random>
#include <string_view>

#include "support/terminal.h"

namespace fs = std::filesystem;

static constexpr int TRIES = 10;
static constexpr unsigned ATTACK_LIMIT = 30; // s
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
    void SetUp() override {
        writeFile(config, CONFIG_TEXT);
        fs::create_directories(home);
        EXPECT_EQ(chown(home.c_str(), NOBODY_ID, NOBODY_ID), 0);
        if (geteuid() != 0)
            GTEST_SKIP() << "two users take root";
    }
    // Lets nobody do `act` on its own, in the root's folder, at the first event of this kind on a
    // name in `folder` that begins with `name`.
    static pid_t attack(const char *folder, std::uint32_t kind, const char *name, void (*act)()) {
        const int watch = inotify_init();
        inotify_add_watch(watch, ("root/" + std::string(folder)).c_str(), kind);
        const pid_t attacker = fork();
        if (attacker == 0) {
            alarm(ATTACK_LIMIT);
            if (chdir("root") == 0 && setgroups(0, nullptr) == 0 && setgid(NOBODY_ID) == 0 &&
                setuid(NOBODY_ID) == 0) {
                awaitEvent(watch, name);
                act();
            }
            _exit(0);
        }
        close(watch);
        return attacker;
    }
    void writeAsNobody(const fs::path &path, std::string_view text) {
        writeFile(path, text);
        EXPECT_EQ(chown(path.c_str(), NOBODY_ID, NOBODY_ID), 0);
    }
    int save(const Arguments &arguments = {}) {
        start(arguments);
        press("<Enter><Down><Down><Enter>");
        return ended() ? exitStatus() : -1;
    }
    const fs::path home = root / "home";
};

TEST_F(AttacksTest, AFolderThatIsSwappedAmidTheSave) {
    for (int n = 0; n < TRIES; n++) {
        fs::remove_all(home / "x11");
        fs::remove_all(home / "mine");
        writeAsNobody(home / "x11/Xconfig", "Driver nobody's\n");
        const pid_t attacker = attack("etc/X11", IN_CREATE, "Xconfig.tmp", [] {
            rename("home/x11", "home/mine");
            std::ignore = symlink("/etc/X11", "home/x11");
        });
        save({"/home/x11/Xconfig"});
        waitpid(attacker, nullptr, 0);
        ASSERT_EQ(readFile(config), CONFIG_TEXT) << "try " << n;
    }
}

TEST_F(AttacksTest, ADocumentWhoseNewVersionIsSwapped) {
    const fs::path secret = root / "etc/secret";
    for (int n = 0; n < TRIES; n++) {
        writeFile(secret, "root's");
        chmod(secret.c_str(), 0600);
        fs::remove(home / "trap");
        fs::create_hard_link(secret, home / "trap");
        writeAsNobody(home / "document", std::string(100'000, '\n'));
        const pid_t attacker = attack("home", IN_CLOSE_WRITE | IN_MODIFY, "document.", [] {
            for (const auto &file : fs::directory_iterator("home"))
                if (file.path().filename().string().starts_with("document."))
                    rename("home/trap", file.path().c_str());
        });
        runProgram({"-l", "/home/document"});
        waitpid(attacker, nullptr, 0);
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
    EXPECT_EQ(exitStatus(), 0); // of a save that is dead now
}

TEST_F(AttacksTest, ControlBytesNeverReachTheTerminal) {
    errorsToFile = false;
    const std::string control = "/\033[31m\x9b\xc2\x9b\177\u00e9\r/x";
    start({control});
    EXPECT_NE(screen().find("Cannot open the folder of /?[31m???\u00e9?/x: No such file"),
              std::string::npos)
        << screen();
    writeFile(korvel / "scrconf/CardInfo", "Class x\nCard\033c\n");
    start({"-lt"});
    EXPECT_EQ(rows(0, 0), "  1. Card?c\n");
    start({}, {"TERM=\033c"});
    EXPECT_EQ(rows(0, 0), "Error opening terminal: ?c.\n");
    EXPECT_EQ(exitStatus(), 1);
    EXPECT_EQ(runProgram({control}).errors, "\nFatal error:\nCannot open the folder of " + control +
                                                ": No such file or directory\n\n");
}

// Where a key is waited for, and where the terminal takes no output: then there is no telling why.
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
                waitUntil([&] { return readFile(call).starts_with("1 "); }, "no write waits");
            }
            const auto from = std::chrono::steady_clock::now();
            if (number != 0)
                kill(program, number);
            else
                closeInput();
            waitUntil([&] { return ended(); }, "the run goes on");
            EXPECT_LT(std::chrono::steady_clock::now() - from, std::chrono::seconds(1));
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
