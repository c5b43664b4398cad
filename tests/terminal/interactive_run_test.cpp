// Whole runs on the shipped data and the sample configuration, from the first screen to the file.
#include "support/terminal.h"

namespace fs = std::filesystem;

struct InteractiveRunTest : TerminalTest {
    void SetUp() override {
        TerminalTest::SetUp();
        if (IsSkipped())
            return;
        fs::copy_file(SCRCONF_SOURCE_DIR "/data/sample/Xconfig", config);
        sample = readFile(config);
    }
    fs::path config = directory / "root/etc/X11/Xconfig";
    fs::path temporary = directory / "root/etc/X11/Xconfig.tmp";
    std::string sample;
};

TEST_F(InteractiveRunTest, CardModesAndVirtualSizeAreSavedAndTheOtherScreenKept) {
    start();
    press("<Enter><Enter>");
    EXPECT_EQ(rows(3, 6), "   Korvel-X Supported Graphics Cards\n\n"
                          "     {b:Arvenne Largo}\n     Arvenne Minim\n");
    press("<Down><Down><Down><Enter>"); // Brightmoor Skylark 64
    EXPECT_EQ(rows(3, 5), "   Supported Modes for Brightmoor Skylark 64\n\n"
                          "     {b: 640 x  480,      256 colors at 60 Hz}\n");
    press("<Down><Down><Down><Down><Space><Down><Space><Down><Down><Down><Down><Space>");
    EXPECT_EQ(rows(9, 14), "     {r: 800 x  600,      256 colors at 60 Hz}\n"
                           "     {r: 800 x  600,      256 colors at 72 Hz}\n"
                           "      800 x  600,      256 colors at 75 Hz\n"
                           "      800 x  600,      256 colors at 85 Hz\n"
                           "     1024 x  768,      256 colors at 43 Hz Interlaced\n"
                           "     {br:1024 x  768,      256 colors at 60 Hz}\n");
    press("<Down><Space><Enter>");
    EXPECT_EQ(rows(3, 8), "   Possible Virtual Screen Resolutions\n\n"
                          "     {b:1024 x 768 (Same as screen resolution)}\n"
                          "     1152 x 864\n     1280 x 1024\n\n");
    press("<Down><Down><Enter>");
    EXPECT_EQ(rows(2, 10),
              "  Current Korvel-X Configuration for screen 1 of 2 (X Screen Number :0.0)\n"
              "\n"
              "  Xconfig:            /etc/X11/Xconfig\n"
              "  Card:               Brightmoor Skylark 64\n"
              "  Mouse:              Serial mouse, two buttons (2 buttons)\n"
              "  Colors:             256\n"
              "  Virtual Resolution: 1280x1024\n"
              "  Screen Resolutions: 800x600 800x600 1024x768 1024x768\n\n");
    EXPECT_EQ(readFile(config), sample); // nothing is written yet
    press("<Down><Down><Enter>");
    EXPECT_EQ(exitStatus(), 0);
    EXPECT_FALSE(fs::exists(temporary));
    EXPECT_EQ(readFile(config),
              "OScode Linux\n"
              "LogFile /var/log/Xkorvel.log\n"
              "Mouse Microsoft /dev/ttyS0\n"
              "Buttons 2\n"
              "Emulate3Buttons 50\n"
              "BaudRate 1200\n"
              "# ReportRate 40\n"
              "FontPath /usr/lib/X11/fonts/misc,/usr/lib/X11/fonts/75dpi,"
              "/usr/lib/X11/fonts/100dpi\n"
              "# VisualClass PseudoColor\n"
              "# NoBackingStore \n"
              "HotKeyExit Off\n"
              "XscreenSaverDelay 600\n"
              "DPMSstandbyDelay 900\n"
              "DPMSoffDelay 1800\n"
              "ScreenLayout 0 LeftOf 1\n"
              "Option SharedMemory\n"
              "Option BackingStoreLimit 4096\n"
              "# Option NoHardwareCursor\n"
              "Video Colour\n"
              "\n\n\n"
              "\n\nDriver bm64\n"
              "Card Brightmoor Skylark 64\n"
              "Chipset Brightmoor BM64\n"
              "# The blitter needs the linear window; without it, comment both "
              "lines out.\n"
              "MemBase 0xF0000000\n"
              "LinearAperture 4096\n"
              "HardwareCursor Yes\n\n"
              "VideoRam 2048\n"
              "Ramdac BM-RD135\n"
              "Virtual 1280 1024\n"
              "Depth 8\n\n"
              "Modes \n"
              "\"800x600\" 40.0 800 840 968 1056 600 601 605 628 PHsync PVsync \n"
              "\"800x600a\" 50.0 800 856 976 1040 600 637 643 666 PHsync PVsync \n"
              "\"1024x768\" 65.0 1024 1048 1184 1344 768 771 777 806 NHsync "
              "NVsync \n"
              "\"1024x768b\" 75.0 1024 1048 1184 1328 768 771 777 806 NHsync "
              "NVsync \n"
              "\n\n" +
                  sample.substr(sample.find("Driver qv9")));
}

TEST_F(InteractiveRunTest, ThePreviousMenuAndQuittingChangeNothing) {
    start({"-1"});
    press("x");
    const std::string panel = rows(0, 11);
    press("<Enter>p");                                // the card menu
    press("<Enter><Enter>P");                         // the modes menu
    press("<Enter><Down><Down><Down><Enter><Enter>"); // Brightmoor Skylark 64, 640x480
    EXPECT_EQ(rows(3, 3), "   Possible Virtual Screen Resolutions\n");
    press("p");
    EXPECT_EQ(rows(0, 11), panel);
    EXPECT_EQ(rows(14, 21),
              "Korvel-X Main Configuration Menu\n\n"
              "  {b:Graphics Card}\n  Mouse\n  Save and Exit\n  Quit without Saving\n\n"
              "  Use Arrow keys and Enter to select\n");
    press("<Up><Down><Down><Down><Down><Down>"); // stops at either end
    EXPECT_EQ(rows(19, 19), "  {b:Quit without Saving}\n");
    EXPECT_EQ(cursor(), (std::pair{19, 2}));
    press("<Enter>");
    EXPECT_EQ(exitStatus(), 0);
    start();
    press(" p");
    EXPECT_EQ(exitStatus(), 0);
    EXPECT_EQ(readFile(config), sample);
}

TEST_F(InteractiveRunTest, TheTemplateStandsInAndGetsTheFontsOfTheMachine) {
    fs::remove(config);
    if (!fs::exists("/usr/share/fonts/X11/misc/fonts.dir"))
        GTEST_SKIP() << "no X fonts";
    fs::create_directories(directory / "root/usr/share/fonts");
    fs::copy("/usr/share/fonts/X11", directory / "root/usr/share/fonts/X11",
             fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    fs::create_directory_symlink("/usr/share/fonts/X11", directory / "root/usr/lib/X11/fonts");
    start({"/tmp/Xconfig"});
    press("<Enter>");
    EXPECT_EQ(rows(2, 5), "  Current Korvel-X Configuration\n\n"
                          "  Xconfig:            /tmp/Xconfig\n"
                          "  Card:               Generic:Standard VGA\n");
    press("<Down><Down><Enter>");
    EXPECT_EQ(exitStatus(), 0);
    const std::string saved = readFile(directory / "root/tmp/Xconfig");
    EXPECT_NE(saved.find("\nFontPath /usr/lib/X11/fonts/misc,/usr/lib/X11/fonts/75dpi,"
                         "/usr/lib/X11/fonts/100dpi"),
              saved.npos);
    EXPECT_TRUE(saved.ends_with("NHsync NVsync \n\n\n"));
    EXPECT_FALSE(fs::exists(config));
    writeFile(directory / "root/usr/lib/X11/Korvel/scrconf/Xconfig.tmpl", "FontPath /mine\n");
    start();
    press("<Enter><Down><Down><Enter>");
    EXPECT_EQ(exitStatus(), 0);
    EXPECT_EQ(readFile(config), "FontPath /mine\n\n\n\n"); // an active one stays
}

TEST_F(InteractiveRunTest, TheNextFreeNumberAddsAScreen) {
    start({"-2"});
    press("<Enter>");
    EXPECT_EQ(rows(2, 10),
              "  Current Korvel-X Configuration for screen 3 of 3 (X Screen Number :0.2)\n"
              "\n"
              "  Xconfig:            /etc/X11/Xconfig\n"
              "  Card:               NOT CONFIGURED\n"
              "  Mouse:              Serial mouse, two buttons (2 buttons)\n"
              "  Colors:\n"
              "  Virtual Resolution:\n"
              "  Screen Resolutions:\n\n");
    press("<Enter><Enter><Space><Space><Enter>"); // confirms an empty selection
    press("<Down><Down><Enter>");
    EXPECT_EQ(rows(3, 6), "   ┌───────────────────────────────────────────┐\n"
                          "   │   Screen 3 has no modes selected          │\n"
                          "   │   Press ENTER to Continue                 │\n"
                          "   └───────────────────────────────────────────┘\n");
    press("<Enter><Up><Up><Enter><Enter><Enter><Enter>"); // Arvenne Largo, its first mode
    EXPECT_EQ(rows(9, 9), "  Screen Resolution:  640x480\n");
    press("<Down><Down><Enter>");
    EXPECT_EQ(exitStatus(), 0);
    const std::string saved = readFile(config);
    const auto sections = sample.find("Driver bm64");
    EXPECT_NE(saved.find(sample.substr(sections) + "\n\nDriver hgx\nCard Arvenne Largo\n"),
              saved.npos);
}
