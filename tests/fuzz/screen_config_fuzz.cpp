// The screen sections of the configuration: read, saved unchanged and read again.
#include "base/lists.h"
#include "base/paths.h"
#include "config/config_file.h"
#include "config/config_lines.h"
#include "config/config_writer.h"
#include "config/screen_config.h"
#include "fuzz/fuzz.h"

static void freeScreens() {
    for (ScreenConfig &screen : screens)
        screen.modes.reset();
    forgetCards();
}

static std::string shownScreen(const ScreenConfig &screen) {
    std::string shown = std::string(screen.card ? screen.card->name : "-") + "\n";
    for (const int value : {screen.virtualWidth, screen.virtualHeight})
        shown += std::to_string(value) + " ";
    for (const VideoMode *mode = screen.modes.get(); mode; mode = mode->next)
        shown += "\n" + mode->label + "|" + std::to_string(mode->depth) + " " +
                 std::to_string(mode->hDisplay) + " " + std::to_string(mode->vDisplay);
    return shown;
}

// Reads all screens into the table; what is shown of them.
static std::string readScreens(std::size_t size) {
    std::string shown;
    const MemoryBound bound(size);
    for (screenCount = 0; screenCount < SCREEN_MAX; screenCount++) {
        auto screen = parseScreenSection(CONFIG_PATH, screenCount);
        if (!screen)
            break;
        shown += shownScreen(*screen);
        screens[static_cast<std::size_t>(screenCount)] = std::move(*screen);
    }
    bound.check();
    return shown;
}

// The sections of the file one behind the other; `count` becomes their number.
static std::string copyOfAll(int &count) {
    std::string all;
    for (count = 0;; count++) {
        std::string section;
        copyScreenSection(count, CONFIG_PATH, section);
        if (section.empty())
            return all;
        all += section;
    }
}

void checkInput(std::string_view input) {
    configPath = CONFIG_PATH;
    writeFile(configPath, input);
    const std::string shown = readScreens(input.size());
    int sections = 0;
    const std::string copy = copyOfAll(sections);
    require(input.ends_with(copy), "sections are copied byte for byte");
    const std::string_view global = input.substr(0, input.size() - copy.size());
    require(!global.starts_with("Driver") && global.find("\nDriver") == global.npos,
            "every section is copied");
    if (sections == screenCount) { // a "Driver" without a blank divides the copy only
        freeList(configLines);
        openConfigFile();
        configLines = readConfigLines(configPlace());
        require(writeConfig().result == SaveResult::Saved, "the configuration is saved");
        require(readFile(configPath).ends_with("\n\n\n" + copy), "unchanged sections are kept");
        freeScreens();
        require(readScreens(input.size()) == shown, "the screens that are saved are read again");
    }
    freeScreens();
}
