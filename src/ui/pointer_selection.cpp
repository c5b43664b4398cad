#include "ui/pointer_selection.h"

#include <string>
#include <string_view>

#include "config/pointer_line.h"
#include "ui/dialog.h"
#include "ui/menu.h"

static constexpr std::string_view POINTER_DEVICE_FOLDER = "/dev/";
static constexpr int POINTER_WIDTH = 60;                                // columns of the menu
static constexpr int POINTER_PROMPT_COLUMN = 1, POINTER_PROMPT_ROW = 1; // on the terminal

// Asks until the answer is empty, which keeps the device file, or names one.
static void askDevice(std::string &device) {
    for (;;) {
        const auto answer = showDialog(POINTER_PROMPT_COLUMN, POINTER_PROMPT_ROW,
                                       "Device (default: " + device + ") : ", DIALOG_PROMPT);
        if (answer->empty())
            return;
        if (answer->starts_with(POINTER_DEVICE_FOLDER)) {
            device = *answer;
            return;
        }
        showNotice("Invalid Device");
    }
}

// The menu stays on the screen under the prompt, so that the type can still be read.
void selectPointerDevice() {
    if (!pointerDevices) {
        showNotice("No pointer devices found");
        return;
    }
    Menu menu = makeListMenu("Dunmere Mouse Menu", MENU_HINT_PREVIOUS, POINTER_WIDTH, 0);
    addMenuItems(menu, pointerDevices, &PointerDevice::name);
    openMenu(menu);
    drawMenu(menu);
    if (const int choice = runMenu(menu)) {
        choosePointer(*listNth(pointerDevices, choice));
        if (currentPointer->device)
            askDevice(*currentPointer->device);
    }
    closeMenu(menu);
}
