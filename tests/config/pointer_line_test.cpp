#include "config/pointer_line.h"

#include "base/paths.h"
#include "config/config_lines.h"
#include "config/config_writer.h"
#include "support/temp_dir.h"

struct PointerLineTest : TempDirTest {
    // The lines that are written of a configuration's pointer.
    static std::string linesOf(std::string_view configuration, PointerDevice *chosen = nullptr) {
        writeFile("Xconfig", configuration);
        configLines = readConfigLines("Xconfig");
        setUpPointer();
        if (chosen)
            choosePointer(*chosen);
        std::string lines;
        writeGlobalLines(lines);
        return lines.substr(0, lines.size() - 3); // without the line ends that follow
    }
    void SetUp() override {
        writeFile(POINTER_LIST_PATH, sampleFile("MouseInfo"));
        pointerDevices = nullptr;
        loadPointerDevices();
        messages();
    }
    void TearDown() override { pointerChosen = false; }
};

TEST_F(PointerLineTest, TheCurrentDeviceComesFromTheFirstActiveMouseLine) {
    EXPECT_EQ(linesOf("# Mouse Elo\nMouse Logi /dev/mine more\nButtons 9\n"),
              "# Mouse Elo\nMouse Logi /dev/mine\nButtons 3\n");
    EXPECT_EQ(currentPointer->name, "C"); // of the last entry of its type
    EXPECT_EQ(linesOf("Mouse Odd\nMouse Logi /dev/x\n"), "Mouse Odd\nMouse Odd\n");
    EXPECT_EQ(linesOf("Mouse\t\t\t\n"), "Mouse \n");
    EXPECT_EQ(currentPointer, nullptr);
}

TEST_F(PointerLineTest, AChosenDeviceIsWrittenWithoutAnActiveMouseLineToo) {
    PointerDevice chosen{nullptr, "", "Bus", 2, "/dev/bus"};
    const std::string lines = "Mouse Bus /dev/bus\nButtons 2\n";
    EXPECT_EQ(linesOf("", &chosen), lines);
    EXPECT_EQ(linesOf("# Mouse Elo\n# Mouse Logi\n", &chosen), lines + "# Mouse Logi\n");
    EXPECT_EQ(linesOf("# Mouse Elo\nMouse Odd\n", &chosen), "# Mouse Elo\n" + lines);
}
