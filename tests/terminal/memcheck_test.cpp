// The program under valgrind: no access outside of what it owns, no use of a value that was never
// set, and nothing lost whose place in memory it has forgotten.
#include "support/terminal.h"

namespace fs = std::filesystem;

static const fs::path VALGRIND = "/usr/bin/valgrind.bin"; // /usr/bin/valgrind is a shell script

struct MemcheckTest : TerminalTest {
    void SetUp() override {
#ifdef __SANITIZE_ADDRESS__
        GTEST_SKIP() << "the sanitizers do the same and need the memory to themselves";
#endif
        if (!fs::exists(VALGRIND))
            GTEST_SKIP() << "no valgrind";
        fs::create_directories(root / "usr/bin");
        fs::copy_file(VALGRIND, root / VALGRIND.relative_path());
        for (const char *folder : {"usr/libexec/valgrind", "usr/lib/debug"}) // lent by the machine
            fs::create_directories(root / folder);
        programCommand.insert(programCommand.begin(),
                              {VALGRIND, "--quiet", "--log-file=/log", "--error-exitcode=99",
                               "--leak-check=full", "--errors-for-leak-kinds=definite",
                               "--show-leak-kinds=definite"});
        if (const int check = run({"-vdif"}).status; check != 0 && check != 99)
            GTEST_SKIP() << "valgrind does not start, as where the machine forbids mounts";
    }
    void TearDown() override {
        programCommand.erase(programCommand.begin(), programCommand.end() - 1);
    }
    std::string log() { return readFile(root / "log"); }
};

TEST_F(MemcheckTest, AnInteractiveRun) {
    fs::copy_file(SCRCONF_SOURCE_DIR "/data/sample/Xconfig", config);
    writeFile(korvel / "scrconf/CardInfo", "Class x\nOne\nOther\n: CardLine\n");
    writeFile(korvel / "DisplayConfig/x/config", "Driver x\nModes\n"
                                                 "640 480 8 60 \"640x480@60\"\n: ModeLine\n"
                                                 "800 600 8 60 40 word 18\n"
                                                 "800 600 16 60 40 1 2 3 4 5 6 7 8\n");
    start();
    press("<Enter><Enter><Enter>P");                          // leaves the modes of a card again
    press("<Enter><Enter><Enter>P");                          // and its virtual sizes
    press("<Enter><Enter><Space><Down><Down><Space><Enter>"); // two depths: asked again
    press("<Enter><Space><Down><Space><Enter>");
    press("<Enter><Down><Enter><Enter><Down><Enter>"); // the other card after all
    press("<Down><Enter><Enter>x<Backspace>/dev/mine<Enter>");
    press("<Down><Enter>");
    EXPECT_EQ(exitStatus(), 0);
    EXPECT_EQ(log(), "");
    const std::string saved = readFile(config);
    EXPECT_NE(saved.find("\nMouse Microsoft /dev/mine\n"), saved.npos) << saved;
    EXPECT_NE(saved.find("Card Other\nCardLine\nModeLine\nVirtual 800 600\n"), saved.npos) << saved;
}

TEST_F(MemcheckTest, TheCommands) {
    const std::string monitor = "VDIF_FILE=/usr/lib/X11/Korvel/MonitorConfig/multisync17.vda";
    writeFile(root / "document", sampleFile("catalogue.mif"));
    const std::pair<Arguments, int> runs[] = {
        {{"-vdif"}, 0},        {{"-lt"}, 0}, {{"-l", "/document"}, 0},
        {{"-lh", "/page"}, 0}, {{"-x"}, 1},  {{"-9"}, 1}};
    for (const auto &[arguments, expected] : runs) {
        EXPECT_EQ(run(arguments, {monitor}).status, expected) << arguments.front();
        EXPECT_EQ(log(), "") << arguments.front();
    }
}
