// Whole runs on the shipped data and the sample configuration, from the first screen to the file.
#include <algorithm>

#include "support/terminal.h"

namespace fs = std::filesystem;

struct InteractiveRunTest : TerminalTest {
    void SetUp() override {
        fs::copy_file(SCRCONF_SOURCE_DIR "/data/sample/Xconfig", config);
        sample = readFile(config);
    }
    std::string sample;
};

TEST_F(InteractiveRunTest, CardModesAndVirtualSizeAreSavedAndTheOtherScreenKept) {
    start();
    press("<Enter><Enter>");
    EXPECT_EQ(rows(3, 6), "   Korvel-X Supported Graphics Cards\n\n"
                          "     {b:3Dlabs Oxygen VX1}\n     3Dlabs Permedia3 Create!\n");
    EXPECT_EQ(rows(22, 22), "     Use Arrow keys and Enter to select, P for Previous Menu\n");
    for (int n = 0; n < 1000 && screen().find("{b:Diamond Stealth 64 DRAM}") == std::string::npos;
         n++)
        press("<Down>");
    press("<Enter>");
    EXPECT_EQ(rows(3, 5), "   Supported Modes for Diamond Stealth 64 DRAM\n\n"
                          "     {b: 640 x  480,      256 colors at 60 Hz}\n");
    press("<Down><Down><Down><Down><Down><Space><Down><Space><Down><Down><Down><Down><Space>");
    EXPECT_EQ(rows(10, 15), "     {r: 800 x  600,      256 colors at 60 Hz}\n"
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
              "  Current Korvel-X Configuration for screen 1 of 2 (X Screen Number :0.0)\n\n"
              "  Xconfig:            /etc/X11/Xconfig\n"
              "  Card:               Diamond Stealth 64 DRAM\n"
              "  Mouse:              Serial mouse, two buttons (2 buttons)\n"
              "  Colors:             256\n"
              "  Virtual Resolution: 1280x1024\n"
              "  Screen Resolutions: 800x600 800x600 1024x768 1024x768\n\n");
    EXPECT_EQ(readFile(config), sample); // nothing is written yet
    press("<Down><Down><Enter>");
    EXPECT_EQ(exitStatus(), 0);
    EXPECT_FALSE(fs::exists(temporary));
    EXPECT_EQ(readFile(config),
              sampleFile("Xconfig.saved") + sample.substr(sample.find("Driver mga")));
}

TEST_F(InteractiveRunTest, ThePreviousMenuAndQuittingChangeNothing) {
    start({"-1"});
    press("x");
    const std::string panel = rows(0, 11);
    press("<Enter>p");              // the card menu
    press("<Enter><Enter>P");       // the modes menu
    press("<Enter><Enter><Enter>"); // the first card, its first mode
    EXPECT_EQ(rows(3, 3), "   Possible Virtual Screen Resolutions\n");
    press("p");
    EXPECT_EQ(rows(0, 11), panel);
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

// The notice leads back to the main menu, and what was chosen there is not lost.
TEST_F(InteractiveRunTest, ASaveGivesWayToAChangedConfiguration) {
    const std::string changed =
        "   │   /etc/X11/Xconfig has changed since it was read          │\n";
    const std::function<void()> changes[] = {
        [&] { fs::remove(config); },
        [&] { writeFile(config, ""); }, // after a start without it
        [&] { fs::last_write_time(config, fs::file_time_type()); },
        [&] { // the same size and time
            const auto time = fs::last_write_time(config);
            writeFile(config, std::string(fs::file_size(config), '#'));
            fs::last_write_time(config, time);
        },
        [&] { // another file of the same size and time
            const fs::path other = root / "tmp/other";
            fs::copy_file(config, other);
            fs::last_write_time(other, fs::last_write_time(config));
            fs::rename(other, config);
        },
    };
    for (const auto &change : changes) {
        start();
        press("<Enter><Down><Down>");
        change();
        const std::string text = readFile(config);
        press("<Enter>");
        EXPECT_EQ(rows(4, 4), changed);
        EXPECT_EQ(fs::exists(config) ? readFile(config) : "", text);
        EXPECT_FALSE(fs::exists(temporary));
    }
    press("<Enter><Down><Enter>");
    EXPECT_EQ(exitStatus(), 0);
    const std::string longPath = "/tmp/" + std::string(60, 'x');
    start({longPath});
    press("<Enter><Down><Down>");
    writeFile(root / longPath.substr(1), "");
    press("<Enter>");
    EXPECT_EQ(rows(4, 4),
              "   │   ..." + std::string(33, 'x') + " has changed since it was read      │\n");
}

TEST_F(InteractiveRunTest, WhatASaveDropsIsToldBeforeAndAfterIt) {
    errorsToFile = true;
    const std::string text = "free\nDriver a\n", saved = "\n\n\nDriver a\n",
                      longPath = "/tmp/" + std::string(90, 'x');
    const auto check = [&](const std::string &path, const std::string &notice,
                           const std::string &told) {
        start({path});
        EXPECT_EQ(rows(22, 22), " " + notice + "\n");
        press("<Enter><Down><Down><Enter>");
        EXPECT_EQ(exitStatus(), 0);
        EXPECT_EQ(readFile("errors"), told);
        EXPECT_TRUE(readFile(root / path.substr(1)).ends_with(saved));
    };
    writeFile(root / "tmp/kept", text);
    fs::create_symlink("kept", root / "tmp/link");
    check("/tmp/link", "A save drops 1 line of this file; what the link leads to stays.",
          "Dropped 1 line of the old Xconfig, to which /tmp/link was a link\n");
    check("/tmp/kept", "A save drops 1 line of this file; it is kept as /tmp/kept.~1~.",
          "Dropped 1 line of the old Xconfig, which is kept as /tmp/kept.~1~\n");
    writeFile(root / longPath.substr(1), "more\n" + text);
    check(longPath,
          "A save drops 2 lines of this file; it is kept as ..." + std::string(21, 'x') + ".~1~.",
          "Dropped 2 lines of the old Xconfig, which is kept as " + longPath + ".~1~\n");
    EXPECT_EQ(readFile(root / "tmp/kept.~1~"), text);
    writeFile(korvel / "scrconf/Xconfig.tmpl", "Driver a\n");
    check("/tmp/new", "There is no /tmp/new yet: a template stands in.", "");
}

TEST_F(InteractiveRunTest, TheTemplateStandsInAndGetsTheFontsOfTheMachine) {
    const fs::path fonts = root / "usr/lib/X11/fonts";
    const auto save = [&](const Arguments &arguments) { // the font path that is saved
        start(arguments);
        press("<Enter>");
        EXPECT_EQ(rows(2, 2), "  Current Korvel-X Configuration\n"); // of one screen
        press("<Down><Down><Enter>");
        EXPECT_EQ(exitStatus(), 0);
        const std::string text = readFile(arguments.empty() ? config : root / "tmp/Xconfig");
        const auto line = text.find("\nFontPath ");
        return text.substr(line + 10, text.find('\n', line + 1) - line - 10);
    };
    fs::remove(config);
    EXPECT_EQ(save({"/tmp/Xconfig"}), "/usr/lib/X11/Korvel/fonts");
    EXPECT_FALSE(fs::exists(config));

    errorsToFile = true;
    for (int n = 0; n < 12; n++)
        writeFile(fonts / std::to_string(n) / "fonts.dir", "");
    const std::string ten = save({});
    EXPECT_EQ(std::ranges::count(ten, ','), 9);
    EXPECT_EQ(readFile("errors"), "Font Path elements array boundary exceeded\n"
                                  "Font Path elements array boundary exceeded\n");

    fs::remove(config);
    writeFile(korvel / "scrconf/Xconfig.tmpl", "LogFile /log\nFontPath /mine\n");
    EXPECT_EQ(save({}), "/mine"); // an active one stays
}

TEST_F(InteractiveRunTest, TheNextFreeNumberAddsAScreen) {
    start({"-2"});
    press("<Enter>");
    EXPECT_EQ(rows(2, 5),
              "  Current Korvel-X Configuration for screen 3 of 3 (X Screen Number :0.2)\n\n"
              "  Xconfig:            /etc/X11/Xconfig\n"
              "  Card:               NOT CONFIGURED\n");
    press("<Enter><Enter><Space><Space><Enter>"); // confirms an empty selection
    press("<Down><Down><Enter>");
    EXPECT_EQ(rows(4, 4), "   │   Screen 3 has no modes selected          │\n");
    press("<Enter><Up><Up><Enter><Enter><Enter><Enter>"); // the first card, its first mode
    EXPECT_EQ(rows(9, 9), "  Screen Resolution:  640x480\n");
    press("<Down><Down><Enter>");
    EXPECT_EQ(exitStatus(), 0);
    const std::string saved = readFile(config);
    const auto sections = sample.find("Driver s3");
    EXPECT_NE(saved.find(sample.substr(sections) + "\n\nDriver permedia\nCard 3Dlabs Oxygen VX1\n"),
              saved.npos);
}
