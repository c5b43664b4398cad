#include "ui/menu.h"

#include <algorithm>
#include <utility>

#include "ui/text.h"

static constexpr int MENU_ITEM_COLUMN = 2, MENU_ITEM_ROW = 2;
static constexpr int MENU_SCREEN_COLUMN = 3, MENU_SCREEN_ROW = 3;
static constexpr int MENU_HEIGHT = 20; // lines

static int visibleItems(const Menu &menu) {
    return std::min(menu.itemCount, menu.height - 2 * menu.itemRow);
}

// Before the first run there are no marks yet.
static bool isMarked(const Menu &menu, int item) {
    return (menu.flags & MENU_MULTI) && !menu.marks.empty() && menu.marks[item] != 0;
}

static void drawItem(const Menu &menu, int item, chtype weight) {
    WINDOW *window = menu.window.get();
    wattrset(window, static_cast<int>(weight | (isMarked(menu, item) ? A_REVERSE : A_NORMAL)));
    putText(window, menu.itemRow + item - menu.firstVisible, menu.itemColumn, menu.items[item]);
}

// The hardware cursor stays on the current item, where screen readers and Braille lines look.
static void paintMenu(const Menu &menu) {
    WINDOW *window = menu.window.get();
    const int visible = visibleItems(menu);
    werase(window);
    for (int item = menu.firstVisible; item < menu.firstVisible + visible; item++)
        drawItem(menu, item, A_NORMAL);
    if (menu.itemCount > 0)
        drawItem(menu, menu.current, A_BOLD);
    wattrset(window, A_NORMAL);
    putText(window, 0, 0, menu.title);
    putText(window, menu.height - 1, menu.itemColumn, menu.hint);
    wmove(window, menu.itemRow + menu.current - menu.firstVisible, menu.itemColumn);
    wrefresh(window);
}

static void moveHighlight(Menu &menu, int step) {
    menu.current = std::clamp(menu.current + step, 0, menu.itemCount - 1);
    drawMenu(menu);
}

static void toggleMark(Menu &menu) {
    int &mark = menu.marks[menu.current];
    mark = mark == 0;
    drawMenu(menu);
}

// Rewrites marks by item into the numbers of the marked items.
static void collectMarks(Menu &menu) {
    std::vector<int> numbers(menu.marks.size());
    auto next = numbers.begin();
    for (int item = 0; item < menu.itemCount; item++)
        if (isMarked(menu, item))
            *next++ = item + 1;
    menu.marks = std::move(numbers);
}

// Enter takes the marked items, or the highlighted one when the user has not marked any himself.
static int confirmChoice(Menu &menu, bool toggled) {
    if (menu.flags & MENU_MULTI) {
        if (!toggled)
            menu.marks[menu.current] = 1;
        collectMarks(menu);
    }
    return menu.current + 1;
}

Menu makeListMenu(std::string title, const char *hint, int width, unsigned flags) {
    Menu menu;
    menu.title = std::move(title);
    menu.hint = hint;
    menu.itemColumn = MENU_ITEM_COLUMN;
    menu.itemRow = MENU_ITEM_ROW;
    menu.screenColumn = MENU_SCREEN_COLUMN;
    menu.screenRow = MENU_SCREEN_ROW;
    menu.width = width;
    menu.height = MENU_HEIGHT;
    menu.flags = flags;
    return menu;
}

void addMenuItem(Menu &menu, std::string_view text) {
    menu.items.push_back(text);
    menu.itemCount++;
}

void openMenu(Menu &menu) {
    menu.window = openWindow(menu.screenColumn, menu.screenRow, menu.width, menu.height);
    keypad(menu.window.get(), TRUE);
    menu.firstVisible = 0;
    menu.current = 0;
    menu.marks.clear();
}

void drawMenu(Menu &menu) {
    const int visible = visibleItems(menu);
    if (menu.current >= menu.firstVisible + visible)
        menu.firstVisible = menu.current - visible + 1;
    menu.firstVisible = std::clamp(menu.firstVisible, 0, menu.current);
    showWindow(menu.window.get(), [&menu] { paintMenu(menu); });
}

int runMenu(Menu &menu) {
    const bool multi = menu.flags & MENU_MULTI;
    if (multi && menu.marks.empty())
        menu.marks.resize(menu.itemCount + 1);
    bool toggled = false;
    for (;;) {
        const int key = waitKey(menu.window.get());
        if (key == 'P' || key == 'p')
            return 0;
        if (menu.itemCount == 0)
            continue;
        if (key == KEY_DOWN) {
            moveHighlight(menu, 1);
        } else if (key == KEY_UP) {
            moveHighlight(menu, -1);
        } else if (key == ' ' && multi) {
            toggled = true;
            toggleMark(menu);
        } else if (key == '\n' || key == '\r' || key == KEY_ENTER) {
            return confirmChoice(menu, toggled);
        }
    }
}

void closeMenu(Menu &menu) {
    hideWindow(menu.window.get());
    menu.window.reset();
}

int askMenu(Menu &menu) {
    openMenu(menu);
    drawMenu(menu);
    const int choice = runMenu(menu);
    closeMenu(menu);
    return choice;
}
