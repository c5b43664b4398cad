#include "frame/startup.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "base/messages.h"
#include "base/paths.h"
#include "config/config_lines.h"
#include "config/font_path.h"
#include "config/screen_config.h"
#include "hwdb/card_list.h"
#include "hwdb/pointer_devices.h"
#include "vdif/vdif_reader.h"

namespace fs = std::filesystem;

// True when the path leads to the temporary file, through links and mounts as well.
static bool isTemporaryFile(const fs::path &path) {
    const fs::path temporary = CONFIG_TEMP_PATH;
    std::error_code error;
    const fs::path target = fs::weakly_canonical(path, error);
    return path == temporary ||
           (target.filename() == temporary.filename() &&
            fs::equivalent(target.parent_path(), temporary.parent_path(), error));
}

// Saving removes the temporary file, so it must not be what is edited, and replaces regular files
// only.
static void checkConfigPath() {
    if (isTemporaryFile(configPath))
        fatalError("Cannot edit the temporary file %s\n", configPath.c_str());
    struct stat status = {};
    if (stat(configPath.c_str(), &status) == 0 && !S_ISREG(status.st_mode))
        fatalError("%s is not a regular file\n", configPath.c_str());
}

static void readScreens() {
    ScreenConfig surplus;
    screenCount = 0;
    while (screenCount < SCREEN_MAX &&
           parseScreenSection(configPath, screenCount, screens[screenCount]))
        screenCount++;
    if (screenCount == SCREEN_MAX && parseScreenSection(configPath, SCREEN_MAX, surplus))
        fatalError("Too many screens in %s: at most %d\n", configPath.c_str(), SCREEN_MAX);
}

static void readTemplate() {
    configLines = readConfigLines(TEMPLATE_PATH);
    parseScreenSection(TEMPLATE_PATH, 0, screens[0]);
    templateUsed = 1;
    screenCount = 1;
    if (configPath.empty())
        configPath = CONFIG_PATH;
}

static void readConfiguration() {
    if (configPath.empty())
        configPath = locateConfigFile().value_or("");
    if (!configPath.empty()) {
        checkConfigPath();
        configState = fileState(configPath);
        configLines = readConfigLines(configPath);
    }
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
    loadCardList();
}
