#include "ui/dialog.h"

#include <algorithm>
#include <string_view>

#include "ui/text.h"

static constexpr int DIALOG_TEXT_COLUMN = 4, DIALOG_TEXT_ROW = 1;
static constexpr int DIALOG_NOTICE_COLUMN = 3, DIALOG_NOTICE_ROW = 3; // on the terminal
static constexpr int DIALOG_PROMPT_HEIGHT = 3, DIALOG_NOTICE_HEIGHT = 4;
static constexpr int DIALOG_PROMPT_ROOM = 40; // columns beside the text of a prompt
static constexpr int DIALOG_NOTICE_ROOM = 15; // columns beside the text of a notice
static constexpr int DIALOG_ANSWER_ROOM = 20; // columns for the answer behind a text that is cut
static constexpr int DIALOG_CONTINUE_ROW = 2;
static constexpr std::size_t DIALOG_ANSWER_MAX = 1022; // characters
static constexpr std::string_view DIALOG_CONTINUE = "Press ENTER to Continue";
static constexpr int DIALOG_ERASE_KEY = 8; // control-H

struct Dialog {
    int screenColumn;
    std::string text;
    DialogKind kind;
    Window window = {};
    int entryRow = 0, entryColumn = 0; // where the answer begins
    std::string answer = {};
};

// The columns from the dialog to the terminal's right edge. A terminal that shrank below the layout
// shows the part that fits, as of all windows.
static int terminalRoom(const Dialog &dialog) {
    return std::max(COLS, LAYOUT_COLUMNS) - dialog.screenColumn;
}

// The width that the text asks for or, where the terminal has less, what there is.
static int dialogWidth(const Dialog &dialog) {
    const int cells = textCells(dialog.text, DIALOG_TEXT_COLUMN);
    const int minimum = static_cast<int>(DIALOG_CONTINUE.size());
    const int wanted = dialog.kind == DIALOG_PROMPT ? cells + DIALOG_PROMPT_ROOM
                                                    : std::max(cells, minimum) + DIALOG_NOTICE_ROOM;
    return std::min(wanted, terminalRoom(dialog));
}

// An answer follows the text of a prompt or, where the text is cut, takes room from it.
static void placeEntry(Dialog &dialog) {
    if (dialog.kind == DIALOG_NOTICE) {
        dialog.entryRow = DIALOG_CONTINUE_ROW;
        dialog.entryColumn = DIALOG_TEXT_COLUMN + static_cast<int>(DIALOG_CONTINUE.size());
        return;
    }
    dialog.entryRow = DIALOG_TEXT_ROW;
    dialog.entryColumn = std::min(DIALOG_TEXT_COLUMN + textCells(dialog.text, DIALOG_TEXT_COLUMN),
                                  getmaxx(dialog.window.get()) - DIALOG_ANSWER_ROOM);
}

// Moves to the cell of the n-th character of the answer, from 0, which curses wraps at the window's
// edge; false outside the window.
static bool moveToCell(const Dialog &dialog, std::size_t n) {
    WINDOW *window = dialog.window.get();
    const int cell = dialog.entryColumn + static_cast<int>(n), width = getmaxx(window);
    return wmove(window, dialog.entryRow + cell / width, cell % width) != ERR;
}

// Blanks out what a prompt's text has of the answer's room, and one cell before it.
static void clearAnswerRoom(const Dialog &dialog) {
    WINDOW *window = dialog.window.get();
    const int textEnd = DIALOG_TEXT_COLUMN + textCells(dialog.text, DIALOG_TEXT_COLUMN);
    if (textEnd > dialog.entryColumn)
        putText(window, dialog.entryRow, dialog.entryColumn - 1,
                std::string(static_cast<std::size_t>(getmaxx(window)), ' '));
}

// Follows the terminal, whose size may have changed. The box is drawn last, over a text that is too
// long for it, and the answer over all.
static void paintDialog(Dialog &dialog) {
    WINDOW *window = dialog.window.get();
    wresize(window, getmaxy(window), dialogWidth(dialog));
    placeEntry(dialog);
    werase(window);
    wattrset(window, A_NORMAL);
    putText(window, DIALOG_TEXT_ROW, DIALOG_TEXT_COLUMN, dialog.text);
    if (dialog.kind == DIALOG_NOTICE)
        putText(window, DIALOG_CONTINUE_ROW, DIALOG_TEXT_COLUMN, DIALOG_CONTINUE);
    else
        clearAnswerRoom(dialog);
    box(window, ACS_VLINE, ACS_HLINE);
    moveToCell(dialog, 0);
    for (const char character : dialog.answer)
        waddch(window, static_cast<chtype>(character));
    wrefresh(window);
}

static void eraseLast(Dialog &dialog) {
    if (dialog.answer.empty())
        return;
    dialog.answer.pop_back();
    if (!moveToCell(dialog, dialog.answer.size()))
        return;
    waddch(dialog.window.get(), ' ');
    moveToCell(dialog, dialog.answer.size());
}

// Reads bytes past curses, which would take an escape sequence for one key: its first byte ends the
// answer, the rest reaches the next menu.
static void editLine(Dialog &dialog) {
    WINDOW *window = dialog.window.get();
    for (;;) {
        wrefresh(window);
        const int key = readKey();
        if (key == DIALOG_ERASE_KEY) {
            eraseLast(dialog);
        } else if (key < ' ' || key > '~') {
            return;
        } else if (dialog.answer.size() < DIALOG_ANSWER_MAX) {
            waddch(window, static_cast<chtype>(key));
            dialog.answer.push_back(static_cast<char>(key));
        }
    }
}

std::optional<std::string> showDialog(int screenColumn, int screenRow, const std::string &text,
                                      DialogKind kind) {
    Dialog dialog{screenColumn, text, kind};
    const int height = kind == DIALOG_PROMPT ? DIALOG_PROMPT_HEIGHT : DIALOG_NOTICE_HEIGHT;
    dialog.window = openWindow(screenColumn, screenRow, dialogWidth(dialog), height);
    WINDOW *window = dialog.window.get();
    showWindow(window, [&dialog] { paintDialog(dialog); });
    editLine(dialog);
    hideWindow(window);
    if (kind == DIALOG_NOTICE)
        return std::nullopt;
    return dialog.answer;
}

void showNotice(const std::string &text) {
    showDialog(DIALOG_NOTICE_COLUMN, DIALOG_NOTICE_ROW, text, DIALOG_NOTICE);
}
