#include "ui/status_panel.h"

#include <string>
#include <string_view>
#include <vector>

#include "config/config_file.h"
#include "config/pointer_line.h"
#include "ui/text.h"

static constexpr int STATUS_SCREEN_COLUMN = 1, STATUS_SCREEN_ROW = 1; // of the window
static constexpr int STATUS_COLUMN = 1, STATUS_ROW = 1;               // of the title in it
static constexpr int STATUS_WIDTH = 79, STATUS_HEIGHT = 10;
static constexpr int STATUS_FIRST_ROW = 3; // of the lines below the title
static constexpr std::size_t STATUS_LABEL_CELLS = 20;
static constexpr std::size_t STATUS_MODES_MAX = 4; // more are shown as the first and last two

static std::string statusLine(std::string label, std::string_view value) {
    label.resize(STATUS_LABEL_CELLS, ' ');
    return label.append(value);
}

static std::string statusTitle() {
    const std::string title = "Current Korvel-X Configuration";
    if (screenCount <= 1)
        return title;
    return title + " for screen " + std::to_string(currentScreen + 1) + " of " +
           std::to_string(screenCount) + " (X Screen Number :0." + std::to_string(currentScreen) +
           ")";
}

// A pointer of a type that the database lacks has no name; its type stands in.
static std::string pointerText(const PointerDevice &pointer) {
    return (pointer.name.empty() ? pointer.type : pointer.name) + " (" +
           std::to_string(pointer.buttons) + " buttons)";
}

static std::string colorsText(int depth) {
    const auto colors = colorCount(depth);
    return colors ? std::to_string(colors) : "";
}

static std::string sizeText(int width, int height) {
    return std::to_string(width) + "x" + std::to_string(height);
}

static std::string resolutionsLine(const ScreenConfig &screen) {
    const auto modes = selectedModes(screen.modes, screen.selection);
    std::string sizes;
    for (std::size_t n = 0; n < modes.size(); n++) {
        const bool shown = modes.size() <= STATUS_MODES_MAX || n < 2 || n + 2 >= modes.size();
        if (shown)
            sizes += sizeText(modes[n]->hDisplay, modes[n]->vDisplay) + " ";
        else if (n == 2)
            sizes += "... ";
    }
    return statusLine(modes.size() == 1 ? "Screen Resolution:" : "Screen Resolutions:", sizes);
}

static std::vector<std::string> statusLines(const ScreenConfig &screen) {
    std::vector<std::string> lines = {
        statusLine("Xconfig:", configPath),
        statusLine("Card:", screen.card ? screen.card->name : ""),
    };
    if (currentPointer)
        lines.push_back(statusLine("Mouse:", pointerText(*currentPointer)));
    lines.push_back(statusLine("Colors:", colorsText(screen.depth)));
    lines.push_back(
        statusLine("Virtual Resolution:",
                   screen.virtualWidth ? sizeText(screen.virtualWidth, screen.virtualHeight) : ""));
    lines.push_back(resolutionsLine(screen));
    return lines;
}

static void paintStatus(WINDOW *panel, const ScreenConfig &screen) {
    wattrset(panel, A_NORMAL);
    werase(panel);
    putText(panel, STATUS_ROW, STATUS_COLUMN, statusTitle());
    int row = STATUS_FIRST_ROW;
    for (const std::string &line : statusLines(screen))
        putText(panel, row++, STATUS_COLUMN, line);
    wrefresh(panel);
}

Window openStatusPanel() {
    return openWindow(STATUS_SCREEN_COLUMN, STATUS_SCREEN_ROW, STATUS_WIDTH, STATUS_HEIGHT);
}

void drawStatusPanel(WINDOW *panel, const ScreenConfig &screen) {
    showWindow(panel, [panel, &screen] { paintStatus(panel, screen); });
}
