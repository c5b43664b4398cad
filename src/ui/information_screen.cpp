#include "ui/information_screen.h"

#include <array>
#include <cstdio>
#include <string>

#include "base/line_reader.h"
#include "base/paths.h"
#include "base/replace_file.h"
#include "config/config_file.h"
#include "config/config_writer.h"
#include "ui/text.h"
#include "ui/window.h"

static constexpr std::size_t INFORMATION_VERSION_MAX = 126; // bytes of the version line
static constexpr int INFORMATION_MARGIN = 1, INFORMATION_INDENT = 8, INFORMATION_VERSION_COLUMN = 9;
static constexpr int INFORMATION_PRODUCT_ROW = 1;

// A text at a fixed place of the screen.
struct PlacedText {
    int row, column;
    const char *text;
};
static constexpr std::array<PlacedText, 11> INFORMATION_TEXTS = {{
    {3, INFORMATION_INDENT, "from"},
    {5, INFORMATION_INDENT, "Dunmere Display Systems"},
    {6, INFORMATION_INDENT, "100 Example Street"},
    {7, INFORMATION_INDENT, "Dunmere, DX 00100"},
    {8, INFORMATION_INDENT, "Phone:  +1 555 0100"},
    {9, INFORMATION_INDENT, "Fax:    +1 555 0101"},
    {10, INFORMATION_INDENT, "Web:    http://www.dunmere.example/"},
    {11, INFORMATION_INDENT, "E-mail: support@dunmere.example"},
    {16, INFORMATION_MARGIN, "To use scrconf, you will need to select the following things:"},
    {18, INFORMATION_INDENT, "(1) Graphics Card (followed by a resolution choice)"},
    {19, INFORMATION_INDENT, "(2) Mouse"},
}};
static constexpr int INFORMATION_NOTICE_ROW = 22;
static constexpr std::size_t INFORMATION_NOTICE_MAX = 78; // bytes
static constexpr int INFORMATION_CONTINUE_ROW = 23;

// The first line of the version file; empty without one.
static std::string readVersion() {
    auto reader = openLines(VERSION_PATH, INFORMATION_VERSION_MAX);
    std::string_view line;
    return reader && readLine(*reader, line) ? std::string(line) : "";
}

// A notice with a path in it, whose beginning goes when it is too long.
static std::string noticeOf(std::string_view before, std::string_view path,
                            std::string_view after) {
    const std::size_t room = INFORMATION_NOTICE_MAX - before.size() - after.size();
    return std::string(before).append(shownEnd(path, room)).append(after);
}

// A notice that ends in where the present configuration will be.
static std::string keptNotice(const std::string &before) {
    if (configIsLink())
        return before + "what the link leads to stays.";
    return noticeOf(before + "it is kept as ", keptPlace(configPlace()).path, ".");
}

// What a save will do that its user may not expect or, when there is nothing of that kind, what no
// other screen tells.
static std::string noticeText() {
    if (!configState)
        return noticeOf("There is no ", configPath, " yet: a template stands in.");
    if (templateUsed)
        return keptNotice("Not readable: a template stands in; ");
    const int dropped = countUnchangedDrops();
    if (dropped == 0)
        return "Space marks modes, P goes back; Control-H, not Backspace, erases an answer.";
    return keptNotice("A save drops " + std::to_string(dropped) +
                      (dropped == 1 ? " line" : " lines") + " of this file; ");
}

// The version may be of several rows and is drawn before the texts that stand on them.
static void paintInformation(const std::string &version, const std::string &notice) {
    wattrset(stdscr, A_NORMAL);
    werase(stdscr);
    putText(stdscr, INFORMATION_PRODUCT_ROW, INFORMATION_MARGIN, "Korvel-X ");
    putWrappedText(stdscr, INFORMATION_PRODUCT_ROW, INFORMATION_VERSION_COLUMN, version);
    for (const PlacedText &entry : INFORMATION_TEXTS)
        putText(stdscr, entry.row, entry.column, entry.text);
    putText(stdscr, INFORMATION_NOTICE_ROW, INFORMATION_MARGIN, notice);
    wattrset(stdscr, A_BOLD | A_REVERSE);
    putText(stdscr, INFORMATION_CONTINUE_ROW, INFORMATION_MARGIN, "Press Enter to continue");
    wattrset(stdscr, A_NORMAL);
    wrefresh(stdscr);
}

void showInformationScreen() {
    const std::string version = readVersion(), notice = noticeText();
    showWindow(stdscr, [&] { paintInformation(version, notice); });
    waitKey(stdscr);
    hideWindow(stdscr);
}
