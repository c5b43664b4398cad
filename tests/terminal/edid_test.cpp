// scrconf-edid as a user runs it, and scrconf with the monitor file that it wrote.
#include <regex>

#include "support/terminal.h"

namespace fs = std::filesystem;

struct EdidProgramTest : TerminalTest {
    void SetUp() override {
        fs::create_directories(root / "usr/bin");
        fs::copy_file(SCRCONF_EDID_PROGRAM, root / "usr/bin/scrconf-edid");
    }
    RunResult convert(const Arguments &arguments) {
        const Arguments scrconf = std::exchange(programCommand, {"/usr/bin/scrconf-edid"});
        const RunResult result = run(arguments, {}, User::NOBODY);
        programCommand = scrconf;
        return result;
    }
    // A connector with a monitor of tools/make-edid, or without one; the path of its EDID.
    fs::path connect(const std::string &name, const std::string &monitor) {
        const fs::path folder = root / "sys/class/drm" / name;
        writeFile(folder / "edid", "");
        writeFile(folder / "status", monitor.empty() ? "disconnected\n" : "connected\n");
        const std::string make = "'" SCRCONF_SOURCE_DIR "/tools/make-edid' " + monitor + " >";
        EXPECT_TRUE(monitor.empty() ||
                    std::system((make + (folder / "edid").string()).c_str()) == 0);
        return folder / "edid";
    }
};

TEST_F(EdidProgramTest, TheOneMonitorIsFoundOrTheConnectorsAreListed) {
    const std::string none =
        "\nFatal error:\nNot exactly one monitor with an EDID is connected\n\n";
    EXPECT_EQ(convert({}).errors, none);
    connect("card0-DVI-I-1", "panel");
    connect("card0-VGA-1", "");
    writeFile(root / "sys/class/drm/version", "drm 1.1.0\n");
    EXPECT_EQ(convert({}).output, sampleFile("panel.vda"));
    connect("card1-VGA-1", "tube");
    const RunResult refused = convert({});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.output + refused.errors,
              "/sys/class/drm/card0-DVI-I-1/edid: connected\n"
              "/sys/class/drm/card0-VGA-1/edid: disconnected, no EDID\n"
              "/sys/class/drm/card1-VGA-1/edid: connected\n" +
                  none);
}

TEST_F(EdidProgramTest, AnErrorNamesTheFileAndLeavesStandardOutputEmpty) {
    fs::rename(connect("wide", "wide"), root / "short");
    fs::resize_file(root / "short", 128);
    const std::pair<Arguments, std::string> cases[] = {
        {{"/missing"}, "Cannot read /missing: No such file or directory\n"},
        {{"/usr/bin/scrconf-edid"}, "\nFatal error:\n/usr/bin/scrconf-edid is no EDID\n\n"},
        {{"-x"}, "\nFatal error:\nInvalid Option\nusage: scrconf-edid [FILE]\n\n"}};
    for (const auto &[arguments, error] : cases) {
        const RunResult result = convert(arguments);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.output + result.errors, error);
    }
    const RunResult partly = convert({"/short"});
    EXPECT_EQ(partly.errors, "/short: extension 1 is missing, left out\n");
    EXPECT_NE(partly.output.find("1920x1200@60R"), std::string::npos);
    fs::remove("output");
    fs::create_symlink("/dev/full", "output");
    EXPECT_EQ(convert({"/short"}).status, 1);
}

// The card has all timings of the library from 800x600 on. Those that stay need up to 108 MHz,
// 68.7 kHz and 87 Hz.
TEST_F(EdidProgramTest, ATubeIsOfferedNoModeBeyondItsLimits) {
    const std::string table = readFile(SCRCONF_SOURCE_DIR "/tools/timings.table");
    const std::regex row("(([0-9]+)x([0-9]+)@([0-9]+)[iR]?) .*");
    const std::string modes =
        "Modes\n" + std::regex_replace(table.substr(table.find("800x")), row, "$2 $3 8 $4 \"$1\"");
    writeFile(korvel / "scrconf/CardInfo", "Class all\nAll timings\n");
    writeFile(korvel / "DisplayConfig/all/config", modes);
    connect("card0-VGA-1", "tube");
    writeFile(root / "etc/X11/monitor.vda", convert({}).output);
    start({}, {"VDIF_FILE=/etc/X11/monitor.vda"});
    press("<Enter><Enter><Enter>");
    EXPECT_EQ(rows(5, 20), "     {b: 800 x  600,      256 colors at 56 Hz}\n"
                           "      800 x  600,      256 colors at 60 Hz\n"
                           "      800 x  600,      256 colors at 72 Hz\n"
                           "      800 x  600,      256 colors at 75 Hz\n"
                           "      800 x  600,      256 colors at 85 Hz\n"
                           "     1024 x  768,      256 colors at 43 Hz Interlaced\n"
                           "     1024 x  768,      256 colors at 60 Hz\n"
                           "     1024 x  768,      256 colors at 70 Hz\n"
                           "     1024 x  768,      256 colors at 75 Hz\n"
                           "     1024 x  768,      256 colors at 85 Hz\n"
                           "     1152 x  864,      256 colors at 75 Hz\n"
                           "     1280 x  960,      256 colors at 60 Hz\n"
                           "     1280 x 1024,      256 colors at 60 Hz\n\n\n\n");
}
