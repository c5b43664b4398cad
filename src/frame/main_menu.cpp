#include "frame/main_menu.h"

#include <array>
#include <string_view>

#include "base/end_signals.h"
#include "base/messages.h"
#include "config/config_file.h"
#include "config/config_writer.h"
#include "ui/card_selection.h"
#include "ui/dialog.h"
#include "ui/information_screen.h"
#include "ui/menu.h"
#include "ui/pointer_selection.h"
#include "ui/status_panel.h"
#include "ui/text.h"

// The choices of the main menu; the previous menu is the way out.
enum MainChoice { MAIN_PREVIOUS, MAIN_CARD, MAIN_MOUSE, MAIN_SAVE, MAIN_QUIT };
static constexpr std::array<std::string_view, 4> MAIN_TEXTS = {
    "Graphics Card", "Mouse", "Save and Exit", "Quit without Saving"};

static constexpr std::size_t MAIN_PATH_MAX = 36; // bytes of the path in a notice

static Menu makeMainMenu() {
    Menu menu;
    menu.title = "Korvel-X Main Configuration Menu";
    menu.hint = MENU_HINT;
    menu.itemColumn = 2;
    menu.itemRow = 2;
    menu.screenColumn = 0;
    menu.screenRow = 14;
    menu.width = 60;
    menu.height = 8;
    for (const std::string_view text : MAIN_TEXTS)
        addMenuItem(menu, text);
    return menu;
}

// The screen that was configured needs a mode: a section without one starts no server.
static bool checkSelection() {
    const ScreenConfig &screen = screens[currentScreen];
    if (screen.unchanged || !screen.selection.empty())
        return true;
    showNotice("Screen " + std::to_string(currentScreen + 1) + " has no modes selected");
    return false;
}

// A save that has begun is finished, whatever asks the run to end.
static SaveReport saveWhole() {
    const EndSignalsHeld held;
    endOnSignal();
    return writeConfig();
}

// True when the configuration was saved; otherwise a notice has said why it was not.
static bool saveConfiguration(SaveReport &report) {
    if (!checkSelection())
        return false;
    report = saveWhole();
    if (report.result == SaveResult::Busy)
        showNotice("Another save is running");
    if (report.result == SaveResult::Changed)
        showNotice(shownEnd(configPath, MAIN_PATH_MAX) + " has changed since it was read");
    return report.result == SaveResult::Saved;
}

// Tells, on the terminal that curses has given back, what the new configuration does not say and
// where the old one is.
static void tellWhatIsKept(const SaveReport &report) {
    const std::string lines =
        std::to_string(report.dropped) + (report.dropped == 1 ? " line" : " lines");
    if (report.kept && report.oldRead)
        showMessage("Dropped %s of the old Xconfig, which is kept as %s\n", lines.c_str(),
                    report.kept->path.c_str());
    else if (report.kept)
        showMessage("The old Xconfig, which could not be read, is kept as %s\n",
                    report.kept->path.c_str());
    else if (report.dropped > 0)
        showMessage("Dropped %s of the old Xconfig, to which %s was a link\n", lines.c_str(),
                    configPath.c_str());
}

// Does what was chosen; false when that ends the interactive mode.
static bool actOnChoice(int choice, SaveReport &report) {
    switch (choice) {
    case MAIN_CARD:
        selectCardAndModes(screens[currentScreen]);
        return true;
    case MAIN_MOUSE:
        selectPointerDevice();
        return true;
    case MAIN_SAVE:
        return !saveConfiguration(report);
    default:
        return false;
    }
}

// What the save left, when there was one.
static SaveReport runMainMenu() {
    SaveReport report;
    Menu menu = makeMainMenu();
    openMenu(menu);
    const Window panel = openStatusPanel();
    int choice;
    do {
        drawStatusPanel(panel.get(), screens[currentScreen]);
        drawMenu(menu);
        choice = runMenu(menu);
        if (choice != MAIN_PREVIOUS) {
            hideWindow(menu.window.get());
            hideWindow(panel.get());
        }
    } while (actOnChoice(choice, report));
    return report;
}

void runInteractiveMode() {
    startCurses();
    showInformationScreen();
    const SaveReport report = runMainMenu();
    endCurses();
    tellWhatIsKept(report);
}
