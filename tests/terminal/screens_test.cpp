// What a walk cannot say of the screens: any locale, any keys.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdlib>
#include <random>

#include "support/terminal.h"

struct ScreensTest : TerminalTest {
    void SetUp() override {
        writeFile(config, "Mouse Odd /dev/odd\nDriver one\nDriver two\n");
        writeFile(korvel / "scrconf/CardInfo", "Class many\nMany modes\nClass none\nNo modes\n");
        writeFile(korvel / "DisplayConfig/many/config",
                  "Driver x\nModes\n640 480 8 60 25 a\n800 600 16 60 25 b\n1024 768 8 60 25 c\n");
        writeFile(korvel / "DisplayConfig/none/config", "Modes\n");
    }
};

TEST_F(ScreensTest, NumbersAreTheSameInEveryLocale) {
    const std::string folder = "root/usr/lib/locale/de_DE.utf8";
    if (std::system(("localedef -i de_DE -f UTF-8 " + folder).c_str()) != 0)
        GTEST_SKIP() << "no locale with decimal commas: " << messages();
    start({}, {"LC_ALL=de_DE.UTF-8"});
    press("<Enter><Enter><Enter><Enter><Enter><Down*2><Enter>");
    EXPECT_EQ(exitStatus(), 0);
    EXPECT_NE(readFile(config).find("\" 25.0 0 "), std::string::npos) << readFile(config);
}

// Keys by chance, most of them with an effect. They cannot save: another save seems to run.
TEST_F(ScreensTest, AFloodOfKeys) {
    static constexpr int KEYS = 50'000, AT_ONCE = 100;
    static constexpr const char *COMMON[] = {"\033OA", "\033OA", "\033OA", "\033OA",
                                             "\033OB", "\r",     " ",      "\b"};
    const std::string before = readFile(config);
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
    EXPECT_EQ(readFile(config), before);
}
