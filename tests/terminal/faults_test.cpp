// What ends a run: the message on standard error, the exit status and the files left behind.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <termios.h>

#include <csignal>
#include <cstring>

#include "support/terminal.h"

namespace fs = std::filesystem;

// To a wait through curses, on the first screen and in a menu, and to one past it, in a prompt.
static constexpr const char *WAITING_KEYS[] = {"", "<Enter>", "<Enter><Down><Enter><Enter>"};

static std::string fatal(const std::string &message) {
    return "\nFatal error:\n" + message + "\n\n";
}

struct FaultsTest : TerminalTest {
    void SetUp() override { writeFile(config, CONFIG_TEXT); }
    // The messages of a run that is to end with status 1 before it needs a terminal.
    std::string failure(const Arguments &arguments, const Settings &settings = {}) {
        const RunResult result = run(arguments, settings);
        EXPECT_EQ(result.status, 1) << result.errors;
        EXPECT_EQ(result.output, "");
        return result.errors;
    }
    static constexpr const char *CONFIG_TEXT = "Driver one\nDriver two\n";
};

TEST_F(FaultsTest, ArgumentsAreTakenInOrder) {
    for (const char *argument : {"-", "-vdifx", "-x", "", "Xconfig", "-l", "-lh"})
        EXPECT_EQ(failure({argument}), fatal("Invalid Option")) << argument;
    EXPECT_EQ(failure({"-x", "-lt"}), fatal("Invalid Option"));
    EXPECT_EQ(failure({"-4"}), fatal("Must configure screen 3 before screen 4"));
    EXPECT_EQ(failure({"-0", "-39"}), fatal("Must configure screen 2 before screen 3"));
    const RunResult check = run({"/x", "-vdif", "-x"});
    EXPECT_EQ(check.status, 0);
    EXPECT_EQ(check.output + check.errors, "");
    const RunResult list = run({"-lt", "-x"}, {}, User::NOBODY);
    EXPECT_EQ(list.status, 0);
    EXPECT_TRUE(list.output.starts_with("  1. 3Dlabs Oxygen VX1\n  2. 3Dlabs Permedia3 Create!\n"))
        << list.output;
    EXPECT_NE(list.output.find(". Linear Framebuffer\n"), list.output.npos);
    EXPECT_EQ(run({"-1"}, {}, User::NOBODY).errors, fatal("must be root to run /usr/sbin/scrconf"));
}

TEST_F(FaultsTest, EveryCommandNeedsTheMonitorFiles) {
    EXPECT_EQ(failure({"-lt"}, {"VDIF_FILE=/nowhere"}), fatal("Problem with /nowhere"));
    EXPECT_EQ(failure({"-x"}, {"VDIF_FILE=/etc"}), fatal("Problem with /etc"));
    const std::string library = "/usr/lib/X11/Korvel/MonitorConfig/timings.vda";
    const RunResult monitor =
        run({"-vdif"}, {"VDIF_FILE=/usr/lib/X11/Korvel/MonitorConfig/multisync17.vda"});
    EXPECT_EQ(monitor.errors, "");
    fs::remove(root / library.substr(1));
    EXPECT_EQ(failure({"-lt"}), fatal("Problem with " + library));
}

TEST_F(FaultsTest, AConfigurationThatMustNotBeReplacedIsRefused) {
    ASSERT_EQ(mkfifo((root / "tmp/fifo").c_str(), 0600), 0);
    for (const std::string path : {"/tmp/fifo", "/etc"})
        EXPECT_EQ(failure({path}), fatal(path + " is not a regular file"));
    fs::create_directory(root / "root/.Xconfig");
    EXPECT_EQ(failure({}), fatal("/root/.Xconfig is not a regular file"));
    for (const std::string path : {"/etc/X11/Xconfig.tmp", "/tmp/..//etc/X11/Xconfig.tmp"})
        EXPECT_EQ(failure({path}), fatal("Cannot edit the temporary file " + path));
    EXPECT_TRUE(fs::is_fifo(root / "tmp/fifo"));
    fs::rename(root / "tmp/fifo", temporary); // the name counts first
    EXPECT_EQ(failure({"/etc/X11/Xconfig.tmp"}),
              fatal("Cannot edit the temporary file /etc/X11/Xconfig.tmp"));
}

TEST_F(FaultsTest, AtMostEightScreens) {
    std::string sections;
    for (int n = 0; n < 8; n++)
        sections += "Driver x\n";
    writeFile(config, sections);
    EXPECT_EQ(failure({"-8"}), fatal("Cannot add screen 8: at most 8 screens"));
    EXPECT_EQ(failure({"-9"}), fatal("Must configure screen 8 before screen 9"));
    writeFile(config, sections + "Driver x\n");
    EXPECT_EQ(failure({"-7"}), fatal("Too many screens in /etc/X11/Xconfig: at most 8"));
}

TEST_F(FaultsTest, TheTemplateIsNeededWithoutAConfiguration) {
    fs::remove(config);
    EXPECT_EQ(failure({"-1"}), fatal("Must configure screen 0 before screen 1"));
    const std::string path = "/usr/lib/X11/Korvel/scrconf/Xconfig.tmpl";
    fs::remove(root / path.substr(1));
    EXPECT_EQ(failure({"-1"}), fatal("failed to open file " + path));
}

TEST_F(FaultsTest, AMissingDisplayEntryLeavesCursesAndTheFile) {
    fs::remove_all(korvel / "DisplayConfig/perm3");
    const std::string message =
        "Can't open DisplayConfig entry /usr/lib/X11/Korvel/DisplayConfig/perm3/config";
    start();
    press("<Enter><Enter><Enter>");
    EXPECT_EQ(exitStatus(), 1);
    EXPECT_NE(output.find("\033[?1049l"), output.npos); // the text would have vanished there
    EXPECT_NE(screen().find(fatal(message)), std::string::npos) << screen();
    EXPECT_EQ(readFile(config), CONFIG_TEXT);
}

TEST_F(FaultsTest, AMessageIsPaintedOverByTheNextDrawing) {
    const fs::path entry = korvel / "DisplayConfig/perm3/config";
    writeFile(entry, "Modes\n1 2 8 60 \"odd\n640 480 8 60 25 word\n");
    start();
    press("<Enter><Enter><Enter>");
    EXPECT_NE(output.find("Unterminated timing name in "), output.npos);
    EXPECT_EQ(rows(0, 6), "\n\n\n   Supported Modes for 3Dlabs Oxygen VX1\n\n"
                          "     {b: 640 x  480,      256 colors at 60 Hz}\n\n");
}

static long childrenSeconds() { // of processor time
    rusage used = {};
    getrusage(RUSAGE_CHILDREN, &used);
    return used.ru_utime.tv_sec + used.ru_stime.tv_sec;
}

TEST_F(FaultsTest, AnUnfitTerminalAndTheEndOfInput) {
    const long before = childrenSeconds();
    errorsToFile = true;
    lines = 23;
    start();
    EXPECT_EQ(exitStatus(), 1);
    EXPECT_EQ(readFile("errors"),
              fatal("Terminal too small: 80 columns by 23 lines, at least 80 by 24 needed"));
    lines = 24;
    start({}, {"TERM=dumb"});
    EXPECT_EQ(exitStatus(), 1);
    EXPECT_EQ(readFile("errors"), fatal("Terminal type dumb cannot place the cursor"));
    for (const char *keys : WAITING_KEYS)
        for (const bool hangUp : {false, true}) {
            hangsUp = hangUp;
            start();
            press(keys);
            closeInput();
            EXPECT_EQ(exitStatus(), 1) << keys;
            const std::string text = readFile("errors");
            EXPECT_TRUE(text == fatal("End of input") ||
                        (hangUp && text == fatal("Ended by a signal: Hangup")))
                << text;
        }
    EXPECT_EQ(readFile(config), CONFIG_TEXT);
    EXPECT_LT(childrenSeconds() - before, 2); // of eight runs
}

TEST_F(FaultsTest, ASignalEndsTheRunAndGivesTheTerminalBack) {
    errorsToFile = true;
    for (const char *keys : WAITING_KEYS)
        for (const int number : {SIGINT, SIGTERM}) {
            start();
            press(keys);
            termios modes = {};
            tcgetattr(slave, &modes);
            EXPECT_FALSE(modes.c_lflag & ICANON);
            kill(program, number);
            EXPECT_EQ(exitStatus(), 1);
            EXPECT_EQ(readFile("errors"),
                      fatal(std::string("Ended by a signal: ") + strsignal(number)));
            tcgetattr(slave, &modes);
            EXPECT_TRUE(modes.c_lflag & ICANON && modes.c_lflag & ECHO && modes.c_oflag & OPOST);
            EXPECT_NE(output.find("\033[?1049l"), output.npos);
        }
    EXPECT_EQ(readFile(config), CONFIG_TEXT);
}

TEST_F(FaultsTest, LostOutputIsAnErrorAndNeverEndsUpInAFile) {
    const fs::path page = root / "tmp/page";
    std::string cards = "Orphan\nClass vga\n";
    for (int n = 0; n < 200; n++) // more than the stream holds back
        cards += "A card of some length\n";
    writeFile(korvel / "scrconf/CardInfo", cards);
    const auto runInto = [&](const char *name, const char *target, const Arguments &arguments) {
        for (const char *file : {"output", "errors"})
            fs::remove(file);
        fs::create_symlink(target, name);
        return run(arguments);
    };
    EXPECT_EQ(runInto("output", "/dev/full", {"-lt"}).errors,
              "Card Orphan has no class: ignored\n"
              "standard output: No space left on device\n");
    for (const std::string name : {"output", "errors"}) { // closed
        const RunResult result = runInto(name.c_str(), "missing/file", {"-lh", "/tmp/page"});
        EXPECT_EQ(result.status, name == "output" ? 1 : 0);
        const std::string text = readFile(page);
        EXPECT_TRUE(text.starts_with("<HTML>") && text.ends_with("</HTML>\n")) << text;
    }
}
