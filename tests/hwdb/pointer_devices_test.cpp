#include "hwdb/pointer_devices.h"

#include "base/paths.h"
#include "config/config_lines.h"
#include "support/temp_dir.h"

struct PointerDevicesTest : TempDirTest {
    void load(std::string_view configuration) {
        writeFile(POINTER_LIST_PATH, sampleFile("MouseInfo"));
        writeFile("Xconfig", configuration);
        configLines = readConfigLines("Xconfig");
        pointerDevices = currentPointer = nullptr;
        loadPointerDevices();
    }
};

static std::string shownDevice(const PointerDevice &device) {
    return "[" + device.name + "] " + device.type + " " + std::to_string(device.buttons) + " " +
           device.device.value_or("-") + "\n";
}

TEST_F(PointerDevicesTest, EntriesTakeTheDefaultsReadBeforeThem) {
    load("# Mouse Logi /dev/x\n");
    std::string shown;
    for (const PointerDevice *device = pointerDevices; device; device = device->next)
        shown += shownDevice(*device);
    EXPECT_EQ(shown, "[Too early] Early 2 -\n"
                     "[A \"quoted\" name] Microsoft 2 /dev/ttyS0\n"
                     "[Unknown buttons] Logi 0 /dev/ttyS1\n"
                     "[B] Logi 3 /dev/b\n"
                     "[C] Logi 4 /dev/c\n"
                     "[Panel] Elo 1 -\n");
    const std::string path = POINTER_LIST_PATH;
    EXPECT_EQ(messages(), "No DefaultBus line before this entry in " + path +
                              ": Mouse \"Too early\" Early 2 DefaultBus\n"
                              "Invalid pointer entry in " +
                              path + ": Mouse \"no device\" X 2\n" + "Invalid pointer entry in " +
                              path + ": Mouse no quotes 2 /dev/x\n");
    EXPECT_EQ(currentPointer, nullptr);
}

TEST_F(PointerDevicesTest, ALineEndsWithItsByte1023) {
    writeFile(POINTER_LIST_PATH, "Mouse \"n\" t 2" + std::string(1009, ' ') + "/d\n");
    configLines = nullptr;
    pointerDevices = nullptr;
    loadPointerDevices();
    ASSERT_NE(pointerDevices, nullptr);
    EXPECT_EQ(shownDevice(*pointerDevices), "[n] t 2 /\n");
}

TEST_F(PointerDevicesTest, TheCurrentDeviceComesFromTheFirstActiveMouseLine) {
    load("# Mouse Elo\nMouse Logi /dev/mine more\n");
    EXPECT_EQ(shownDevice(*currentPointer), "[C] Logi 3 /dev/mine\n");
    load("Mouse Odd\nMouse Logi /dev/x\n");
    EXPECT_EQ(shownDevice(*currentPointer), "[] Odd 0 -\n");
    load("Mouse\t\t\t\n");
    EXPECT_EQ(currentPointer, nullptr);
    std::filesystem::remove(POINTER_LIST_PATH);
    EXPECT_EXIT(loadPointerDevices(), testing::ExitedWithCode(1), "Can't Open file .*MouseInfo\n");
}
