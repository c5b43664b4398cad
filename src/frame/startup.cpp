#include "frame/startup.h"

#include <unistd.h>

#include <cstdlib>
#include <utility>

#include "base/messages.h"
#include "base/paths.h"
#include "config/config_file.h"
#include "config/config_lines.h"
#include "config/font_path.h"
#include "config/pointer_line.h"
#include "config/screen_config.h"
#include "hwdb/card_list.h"
#include "hwdb/pointer_devices.h"
#include "vdif/vdif_reader.h"

static void readScreens() {
    while (auto screen = parseScreenSection(configPlace(), screenCount)) {
        if (screenCount == SCREEN_MAX)
            fatalError("Too many screens in %s: at most %d\n", configPath.c_str(), SCREEN_MAX);
        screens[screenCount++] = std::move(*screen);
    }
}

static void readTemplate() {
    configLines = readConfigLines(TEMPLATE_PATH);
    screens[0] = parseScreenSection(TEMPLATE_PATH, 0).value_or(ScreenConfig{});
    templateUsed = true;
    screenCount = 1;
}

static void readConfiguration() {
    openConfigFile();
    configLines = readConfigLines(configPlace());
    if (configLines)
        readScreens();
    else
        readTemplate();
}

// Gives the template's font path line the font directories of this machine.
static void fillFontPath() {
    const auto fontPath = findFontPath();
    if (!fontPath) {
        showMessage("X11 Fonts not found!  Please install fonts in\n");
        showMessage("/usr/lib/X11/fonts or use vi to put the correct\n");
        showMessage("FontPath in the file %s\n", TEMPLATE_PATH);
        std::exit(EXIT_FAILURE);
    }
    for (ConfigLine *line = configLines; line; line = line->next) {
        if (line->keyword != "FontPath" || line->state == LineState::Active)
            continue;
        line->value = *fontPath;
        line->state = LineState::Active;
        return;
    }
}

// A new screen is configured by the next free number. The template's one screen comes first.
static void settleScreenNumber() {
    if (currentScreen > screenCount || (templateUsed && currentScreen > 0))
        fatalError("Must configure screen %d before screen %d\n", currentScreen - 1, currentScreen);
    if (currentScreen < screenCount)
        return;
    if (screenCount == SCREEN_MAX)
        fatalError("Cannot add screen %d: at most %d screens\n", currentScreen, SCREEN_MAX);
    appendPlaceholderScreen();
}

void loadMonitors() {
    const char *monitorPath = std::getenv("VDIF_FILE");
    if (!loadMonitorDescriptions(TIMING_LIBRARY_PATH, monitorPath))
        fatalError("Problem with %s\n", monitorPath ? monitorPath : TIMING_LIBRARY_PATH);
}

void prepareInteractiveMode(const char *programName) {
    if (getuid() != 0)
        fatalError("must be root to run %s\n", programName);
    readConfiguration();
    if (templateUsed)
        fillFontPath();
    settleScreenNumber();
    loadPointerDevices();
    setUpPointer();
    loadCardList();
}
