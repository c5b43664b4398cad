// Menus: a scrolling list of items in a window, of which one is chosen or several are marked.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/lists.h"
#include "ui/window.h"

inline constexpr unsigned MENU_MULTI = 0x1; // several items can be marked with the space key

inline constexpr const char *MENU_HINT = "Use Arrow keys and Enter to select";
inline constexpr const char *MENU_HINT_PREVIOUS =
    "Use Arrow keys and Enter to select, P for Previous Menu";

struct Menu {
    Window window = {};
    std::string title = {};                   // on row 0
    std::string hint = {};                    // on the last row
    std::vector<std::string_view> items = {}; // texts that belong to the records shown
    int itemCount = 0;
    int itemColumn = 0, itemRow = 0;     // of the first item; itemRow rows stay free at the bottom
    int screenColumn = 0, screenRow = 0; // top left corner of the window on the terminal
    int width = 0, height = 0;           // columns, lines
    unsigned flags = 0;                  // MENU_MULTI
    int firstVisible = 0;                // item on the first row, from 0
    int current = 0;                     // highlighted item, from 0
    std::vector<int> marks = {};         // MENU_MULTI: one entry per item and one more, see runMenu
};

// A menu of the size and place that all menus but the main menu have.
Menu makeListMenu(std::string title, const char *hint, int width, unsigned flags);

// Adds an item; the menu refers to the text.
void addMenuItem(Menu &menu, std::string_view text);

// Adds the records of a list as items.
template <ListRecord Record, typename Text>
void addMenuItems(Menu &menu, const Record *list, Text Record::*text) {
    for (; list; list = list->next)
        addMenuItem(menu, list->*text);
}

// Opens the menu's window, with the highlight on the first item and nothing marked.
void openMenu(Menu &menu);

// Draws the whole menu, scrolled so that the highlighted item is visible.
void drawMenu(Menu &menu);

// Reads keys until a choice is made: 0 when the user asked for the previous menu, else the number
// of the highlighted item, from 1. With MENU_MULTI `marks` then holds the numbers of the marked
// items in ascending order, followed by zeros.
int runMenu(Menu &menu);

// Takes the menu off the screen and closes its window.
void closeMenu(Menu &menu);

// Opens, draws, runs and closes the menu; returns what runMenu returned.
int askMenu(Menu &menu);
