#include "frame/main_menu.h"

#include <array>
#include <string_view>

#include "base/messages.h"
#include "config/config_lines.h"
#include "config/config_writer.h"
#include "ui/card_selection.h"
#include "ui/dialog.h"
#include "ui/information_screen.h"
#include "ui/menu.h"
#include "ui/pointer_selection.h"
#include "ui/status_panel.h"

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

// The path or, of one too long for a notice, its end.
static std::string shortenedPath() {
    if (configPath.size() <= MAIN_PATH_MAX)
        return configPath;
    return "..." + configPath.substr(configPath.size() - (MAIN_PATH_MAX - 3));
}

// True when the configuration was saved; otherwise a notice has said why it was not.
static bool saveConfiguration() {
    if (!checkSelection())
        return false;
    const SaveResult result = writeConfig();
    if (result == SaveResult::Busy)
        showNotice("Another save is running");
    if (result == SaveResult::Changed)
        showNotice(shortenedPath() + " has changed since it was read");
    return result == SaveResult::Saved;
}

// Does what was chosen; false when that ends the interactive mode.
static bool actOnChoice(int choice) {
    switch (choice) {
    case MAIN_CARD:
        selectCardAndModes(screens[currentScreen]);
        return true;
    case MAIN_MOUSE:
        selectPointerDevice();
        return true;
    case MAIN_SAVE:
        return !saveConfiguration();
    default:
        return false;
    }
}

static void runMainMenu() {
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
    } while (actOnChoice(choice));
}

void runInteractiveMode() {
    startCurses();
    showInformationScreen();
    runMainMenu();
    endCurses();
}
