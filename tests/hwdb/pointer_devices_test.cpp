#include "hwdb/pointer_devices.h"

#include "base/paths.h"
#include "support/temp_dir.h"

struct PointerDevicesTest : TempDirTest {
    void load(std::string_view database) {
        writeFile(POINTER_LIST_PATH, database);
        pointerDevices = nullptr;
        loadPointerDevices();
    }
};

static std::string shownDevice(const PointerDevice &device) {
    return "[" + device.name + "] " + device.type + " " + std::to_string(device.buttons) + " " +
           device.device.value_or("-") + "\n";
}

TEST_F(PointerDevicesTest, EntriesTakeTheDefaultsReadBeforeThem) {
    load(sampleFile("MouseInfo"));
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
}

TEST_F(PointerDevicesTest, ALineEndsWithItsByte1023) {
    load("Mouse \"n\" t 2" + std::string(1009, ' ') + "/d\n");
    ASSERT_NE(pointerDevices, nullptr);
    EXPECT_EQ(shownDevice(*pointerDevices), "[n] t 2 /\n");
    std::filesystem::remove(POINTER_LIST_PATH);
    EXPECT_EXIT(loadPointerDevices(), testing::ExitedWithCode(1), "Can't Open file .*MouseInfo\n");
}
