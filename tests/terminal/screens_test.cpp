// The screens one by one, on small data files of their own.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdlib>
#include <random>

#include "support/terminal.h"

namespace fs = std::filesystem;

struct ScreensTest : TerminalTest {
    void SetUp() override {
        writeFile(config, "Mouse Odd /dev/odd\n"
                          "Driver one\nCard Old\nVirtual 1600 1200\nDepth 8\nModes\n"
                          "\"640x480\"\n\"800x600\"\n\"1024x768\"\n\"1152x900\"\n\"1280x1024\"\n"
                          "\"1600x1200\"\nDriver two\nDriver three\nDepth 32\nModes\n"
                          "\"1x1\"\n\"2x2\"\n\"3x3\"\n\"4x4\"\n\"5x5\"\n");
        writeFile(korvel / "scrconf/CardInfo", "Class many\nMany modes\nClass one\nOne mode\n"
                                               "Class empty\nNo modes\nClass gone\nNo entry\n");
        std::string modes = "Driver many\nModes\n";
        for (int n = 1; n <= 20; n++)
            modes += std::to_string(8 * n) + " 100 " + (n == 2 ? "16" : "8") + " 60 25 word\n";
        writeFile(korvel / "DisplayConfig/many/config", modes);
        writeFile(korvel / "DisplayConfig/one/config",
                  "Modes\nNoVirtual\n640 480 8 60 25 a\n800 600 8 60 25 b\n1024 768 8 60 25 c\n");
        writeFile(korvel / "DisplayConfig/empty/config", "Modes\n");
        writeFile(korvel / "scrconf/MouseInfo", "Mouse \"Serial\" Microsoft 2 /dev/ttyS0\n"
                                                "TouchScreen \"Panel\" Elo 1 NoDevice\n");
    }
    // The mode of the class "many" on a screen row, as the menu shows it.
    static std::string modeText(int n) {
        const std::string width = std::to_string(8 * n);
        return std::string(4 - width.size(), ' ') + width + " x  100,      256 colors at 60 Hz";
    }
};

TEST_F(ScreensTest, TheInformationScreenAndThePanel) {
    writeFile(korvel / ".version", " 9.9\t\033" + std::string(70, '9') + "\n");
    start({"-1"});
    EXPECT_EQ(rows(0, 3), "\n Korvel-X 9.9   " + std::string(64, '9') + "\n999999\n        from\n");
    EXPECT_EQ(rows(16, 23),
              " To use scrconf, you will need to select the following things:\n\n"
              "        (1) Graphics Card (followed by a resolution choice)\n"
              "        (2) Mouse\n\n\n"
              " Space marks modes, P goes back; Control-H, not Backspace, erases an answer.\n"
              " {br:Press Enter to continue}\n");
    press("x");
    EXPECT_EQ(rows(1, 9),
              "\n"
              "  Current Korvel-X Configuration for screen 2 of 3 (X Screen Number :0.1)\n"
              "\n"
              "  Xconfig:            /etc/X11/Xconfig\n"
              "  Card:\n"
              "  Mouse:              Odd (0 buttons)\n"
              "  Colors:\n"
              "  Virtual Resolution:\n"
              "  Screen Resolutions:\n");
    fs::remove(korvel / ".version");
    start();
    EXPECT_EQ(rows(1, 1), " Korvel-X\n");
    press("<Enter>");
    EXPECT_EQ(rows(7, 9), "  Colors:             256\n"
                          "  Virtual Resolution: 1600x1200\n"
                          "  Screen Resolutions: 640x480 800x600 ... 1280x1024 1600x1200\n");
    start({"-2"});
    press("<Enter>");
    EXPECT_EQ(rows(7, 9), "  Colors:             16777216\n"
                          "  Virtual Resolution:\n"
                          "  Screen Resolutions: 1x1 2x2 ... 4x4 5x5\n");
}

TEST_F(ScreensTest, AMenuScrollsByOneLineAtEitherEdge) {
    start();
    press("<Enter><Enter><Enter>");
    for (int n = 0; n < 16; n++)
        press("<Down>");
    EXPECT_EQ(rows(3, 5),
              "   Supported Modes for Many modes\n\n       16 x  100,    65536 colors at 60 Hz\n");
    EXPECT_EQ(rows(19, 22), "     " + modeText(16) + "\n     {b:" + modeText(17) + "}\n\n" +
                                "     Use Arrow keys and Enter to select\n");
    for (int n = 0; n < 5; n++)
        press("<Down>");
    EXPECT_EQ(rows(20, 20), "     {b:" + modeText(20) + "}\n");
    for (int n = 0; n < 16; n++)
        press("<Up>");
    EXPECT_EQ(rows(5, 6), "     {b:" + modeText(4) + "}\n     " + modeText(5) + "\n");
    EXPECT_EQ(cursor(), (std::pair{5, 5}));
}

TEST_F(ScreensTest, ModesOfDifferentDepthsAreAskedForAgain) {
    start();
    press("<Enter><Enter><Enter><Space><Down><Space><Enter>");
    EXPECT_EQ(rows(3, 6),
              "   ┌──────────────────────────────────────────────────────────────────────┐\n"
              "   │   All modes must have the same color depth: Please reenter.          │\n"
              "   │   Press ENTER to Continue                                            │\n"
              "   └──────────────────────────────────────────────────────────────────────┘\n");
    press("<Enter>");
    EXPECT_EQ(rows(5, 6),
              "     {b:" + modeText(1) + "}\n" + "       16 x  100,    65536 colors at 60 Hz\n");
}

TEST_F(ScreensTest, ACardWithoutVirtualSizeTakesOneMode) {
    start();
    press("<Enter><Enter><Down><Down><Down><Enter>");
    EXPECT_EQ(rows(3, 3), "   Supported Modes for One mode\n");
    press("<Down><Space>"); // marks nothing
    EXPECT_EQ(rows(6, 6), "     {b: 800 x  600,      256 colors at 60 Hz}\n");
    press("<Enter>");
    EXPECT_EQ(rows(5, 9), "  Card:               One mode\n"
                          "  Mouse:              Odd (0 buttons)\n"
                          "  Colors:             256\n"
                          "  Virtual Resolution: 800x600\n"
                          "  Screen Resolution:  800x600\n");
}

TEST_F(ScreensTest, EmptyListsAreSaidAndChangeNothing) {
    writeFile(korvel / "scrconf/MouseInfo", "");
    start();
    press("<Enter>");
    const std::string panel = rows(0, 11);
    press("<Enter><Down><Down><Enter>");
    EXPECT_EQ(rows(4, 4), "   │   No modes for this card           │\n");
    press("<Enter>");
    EXPECT_EQ(rows(0, 11), panel);
    press("<Down><Enter>");
    EXPECT_EQ(rows(4, 4), "   │   No pointer devices found          │\n");
    press("<Enter>");
    EXPECT_EQ(rows(0, 11), panel);
    writeFile(korvel / "scrconf/CardInfo", "");
    start();
    press("<Enter><Enter>");
    EXPECT_EQ(rows(4, 4), "   │   No graphics cards found          │\n");
}

TEST_F(ScreensTest, AWrongDeviceIsAskedForAgain) {
    start();
    press("<Enter><Down><Enter><Enter>");
    EXPECT_EQ(rows(1, 4),
              " ┌─────────────────────────────────────────────────────────────────────┐\n"
              " │   Device (default: /dev/ttyS0) :                                    │\n"
              " └─────────────────────────────────────────────────────────────────────┘\n"
              "\n");
    EXPECT_EQ(rows(5, 6), "     {b:Serial}\n     Panel\n");
    EXPECT_EQ(cursor(), (std::pair{2, 36}));
    press("ttyX<Backspace>S1<Enter>");
    EXPECT_EQ(rows(4, 4), "   │   Invalid Device                   │\n");
    press("<Enter>/dev/tty");
    EXPECT_EQ(rows(2, 2),
              " │   Device (default: /dev/ttyS0) : /dev/tty                           │\n");
    press("S1<Esc>"); // ends the answer as Enter does
    EXPECT_EQ(rows(6, 6), "  Mouse:              Serial (2 buttons)\n");
    press("<Enter><Enter><Enter>"); // the new device is the default now and is kept
    press("<Enter><Down><Enter>");
    EXPECT_EQ(rows(6, 6), "  Mouse:              Panel (1 buttons)\n"); // asks for no device
    press("<Enter><Enter><Enter><Down><Enter>");
    EXPECT_EQ(exitStatus(), 0);
    EXPECT_TRUE(readFile(config).starts_with("Mouse Microsoft /dev/ttyS1\nButtons 2\n\n\n\n"));
}

TEST_F(ScreensTest, LongTextsAreCutByTheCell) {
    const std::string wide = "\u65e5"; // two cells
    writeFile(korvel / "scrconf/CardInfo", "Class many\n" + std::string(57, 'Y') + wide + "\n" +
                                               std::string(56, 'Z') + wide + "Z\n" + wide +
                                               "\tA\xff\n");
    writeFile(korvel / "scrconf/MouseInfo", "Mouse \"M\" M 2 /dev/" + std::string(60, 'd') + "\n");
    start();
    press("<Enter><Enter>");
    EXPECT_EQ(rows(5, 8), "     {b:" + std::string(57, 'Y') + "}\n     " + std::string(56, 'Z') +
                              wide + "\n     " + wide + "     A?\n\n");
    press("<Enter>");
    EXPECT_EQ(rows(3, 3), "   Supported Modes for " + std::string(55, 'Y') + "\n");
    press("p<Down><Enter><Enter>/dev/x");
    resize(24, 127); // one column less would be too few
    EXPECT_EQ(rows(2, 2), " │   Device (default: /dev/" + std::string(60, 'd') + ") : /dev/x" +
                              std::string(29, ' ') + "│\n");
    resize(24, 80);
    press("y");
    EXPECT_EQ(rows(2, 2),
              " │   Device (default: /dev/" + std::string(32, 'd') + " /dev/xy            │\n");
}

TEST_F(ScreensTest, AnAnswerMayBeLongerThanItsDialog) {
    start();
    press("<Enter><Down><Enter><Enter>");
    press("/dev/" + std::string(60, 'a'));
    EXPECT_EQ(rows(2, 3), " │   Device (default: /dev/ttyS0) : /dev/" + std::string(31, 'a') +
                              "\n " + std::string(29, 'a') +
                              "─────────────────────────────────────────┘\n");
    for (int n = 0; n < 58; n++)
        press("<Backspace>");
    press("b<Enter>");
    press("<Down><Enter>");
    EXPECT_EQ(exitStatus(), 0);
    EXPECT_TRUE(readFile(config).starts_with("Mouse Microsoft /dev/aab\n"));
}

// On each type and at each size every screen is the same, and a shrinking terminal loses nothing.
TEST_F(ScreensTest, TerminalTypesAndSizes) {
    std::vector<std::string> expected;
    for (const char *type : {"TERM=xterm-256color", "TERM=linux", "TERM=vt100"})
        for (const bool large : {false, true}) {
            SCOPED_TRACE(std::string(type) + (large ? ", large" : ""));
            const unsigned short height = large ? 50 : 24, width = large ? 132 : 80;
            lines = height, columns = width;
            start({}, {type});
            std::vector<std::string> seen;
            for (const char *keys :
                 {"", "<Enter>", "<Enter>", "<Enter><Space><Down><Space>", "<Enter>",
                  "<Enter>p<Down><Enter>", "<Enter>/dev/x", "<Enter>"}) {
                press(keys);
                const std::string before = screen();
                const auto place = cursor();
                resize(5, 20);
                resize(1, 1);
                resize(height, width);
                EXPECT_EQ(screen(), before);
                EXPECT_EQ(cursor(), place);
                seen.push_back(rows(0, 23));
            }
            EXPECT_EQ(seen, expected.empty() ? seen : expected);
            expected = seen;
        }
    lines = 24, columns = 80;
    start();
    press("<Enter>");
    resize(10, 40);
    press("<Down><Enter>p"); // drawn on a terminal that is too small
    resize(30, 100);
    EXPECT_EQ(rows(2, 2),
              "  Current Korvel-X Configuration for screen 1 of 3 (X Screen Number :0.0)\n");
}

TEST_F(ScreensTest, NumbersAreTheSameInEveryLocale) {
    const std::string folder = "root/usr/lib/locale/de_DE.utf8";
    if (std::system(("localedef -i de_DE -f UTF-8 " + folder).c_str()) != 0)
        GTEST_SKIP() << "no locale with decimal commas: " << messages();
    start({}, {"LC_ALL=de_DE.UTF-8"});
    press("<Enter><Enter><Down><Down><Down><Enter><Enter>"); // the card of one mode
    press("<Down><Down><Enter>");
    EXPECT_EQ(exitStatus(), 0);
    EXPECT_NE(readFile(config).find("\" 25.0 0 "), std::string::npos) << readFile(config);
}

// Keys by chance, most of them with an effect and few that lead out. They cannot save: another save
// seems to run.
TEST_F(ScreensTest, AFloodOfKeys) {
    static constexpr int KEYS = 100'000, AT_ONCE = 100;
    static constexpr std::string_view COMMON[] = {"\033OA", "\033OA", "\033OA", "\033OA",
                                                  "\033OB", "\r",     " ",      "\b"};
    const std::string before = readFile(config);
    writeFile(korvel / "DisplayConfig/gone/config", "Modes\n");
    const int lock = open(temporary.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    std::mt19937 random(1);
    const auto chanceKey = [&random]() -> std::string {
        const auto byte = static_cast<char>(random());
        const bool out = (byte == 'p' || byte == 'P') && random() % 16 != 0;
        return out || random() % 8 != 0 ? std::string(COMMON[random() % std::size(COMMON)])
                                        : std::string(1, byte);
    };
    for (int sent = 0; sent < KEYS;) {
        start();
        for (; !ended() && sent < KEYS; sent += AT_ONCE) {
            std::string keys;
            for (int n = 0; n < AT_ONCE; n++)
                keys += chanceKey();
            send(keys);
        }
        ASSERT_EQ(ended() ? exitStatus() : 0, 0) << screen();
    }
    close(lock);
    EXPECT_EQ(readFile(config), before);
}
