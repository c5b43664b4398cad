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
static constexpr std::size_t DIALOG_ANSWER_SIZE = 1023; // answers have one character less
static constexpr std::string_view DIALOG_CONTINUE = "Press ENTER to Continue";
static constexpr int EDIT_ERASE_KEY = 8; // control-H

struct Dialog {
    Window window;
    std::string text;
    DialogKind kind;
    int entryRow, entryColumn; // where the answer begins
    std::string answer = {};
};

// Moves to the cell of the n-th character of an answer, from 0, which curses wraps at the window's
// edge; false outside the window.
static bool moveToCell(WINDOW *window, int row, int column, std::size_t n) {
    const int cell = column + static_cast<int>(n), width = getmaxx(window);
    return wmove(window, row + cell / width, cell % width) != ERR;
}

// Blanks out what a prompt's text has of the answer's room, and one cell before it.
static void clearAnswerRoom(const Dialog &dialog) {
    const int textEnd = DIALOG_TEXT_COLUMN + textCells(dialog.text, DIALOG_TEXT_COLUMN);
    if (textEnd > dialog.entryColumn)
        putText(dialog.window.get(), dialog.entryRow, dialog.entryColumn - 1,
                std::string(LAYOUT_COLUMNS, ' '));
}

// The box is drawn last, over a text that is too long for it, and the answer over all.
static void paintDialog(const Dialog &dialog) {
    WINDOW *window = dialog.window.get();
    werase(window);
    wattrset(window, A_NORMAL);
    putText(window, DIALOG_TEXT_ROW, DIALOG_TEXT_COLUMN, dialog.text);
    if (dialog.kind == DIALOG_NOTICE)
        putText(window, DIALOG_CONTINUE_ROW, DIALOG_TEXT_COLUMN, DIALOG_CONTINUE);
    else
        clearAnswerRoom(dialog);
    box(window, ACS_VLINE, ACS_HLINE);
    moveToCell(window, dialog.entryRow, dialog.entryColumn, 0);
    for (const char character : dialog.answer)
        waddch(window, static_cast<chtype>(character));
    wrefresh(window);
}

static Dialog openPrompt(int screenColumn, int screenRow, const std::string &text) {
    const int cells = textCells(text, DIALOG_TEXT_COLUMN);
    const int width = std::min(cells + DIALOG_PROMPT_ROOM, LAYOUT_COLUMNS - screenColumn);
    const int entry = std::min(DIALOG_TEXT_COLUMN + cells, width - DIALOG_ANSWER_ROOM);
    return {openWindow(screenColumn, screenRow, width, DIALOG_PROMPT_HEIGHT), text, DIALOG_PROMPT,
            DIALOG_TEXT_ROW, entry};
}

static Dialog openNotice(int screenColumn, int screenRow, const std::string &text) {
    const int minimum = static_cast<int>(DIALOG_CONTINUE.size());
    const int cells = std::max(textCells(text, DIALOG_TEXT_COLUMN), minimum);
    const int width = std::min(cells + DIALOG_NOTICE_ROOM, LAYOUT_COLUMNS - screenColumn);
    return {openWindow(screenColumn, screenRow, width, DIALOG_NOTICE_HEIGHT), text, DIALOG_NOTICE,
            DIALOG_CONTINUE_ROW, DIALOG_TEXT_COLUMN + minimum};
}

static void eraseLast(WINDOW *window, int row, int column, std::string &buffer) {
    if (buffer.empty())
        return;
    buffer.pop_back();
    if (!moveToCell(window, row, column, buffer.size()))
        return;
    waddch(window, ' ');
    moveToCell(window, row, column, buffer.size());
}

std::optional<std::string> showDialog(int screenColumn, int screenRow, const std::string &text,
                                      DialogKind kind) {
    Dialog dialog = kind == DIALOG_PROMPT ? openPrompt(screenColumn, screenRow, text)
                                          : openNotice(screenColumn, screenRow, text);
    WINDOW *window = dialog.window.get();
    showWindow(window, [&dialog] { paintDialog(dialog); });
    editLine(window, dialog.entryRow, dialog.entryColumn, dialog.answer, DIALOG_ANSWER_SIZE);
    hideWindow(window);
    if (kind == DIALOG_NOTICE)
        return std::nullopt;
    return dialog.answer;
}

void showNotice(const std::string &text) {
    showDialog(DIALOG_NOTICE_COLUMN, DIALOG_NOTICE_ROW, text, DIALOG_NOTICE);
}

int editLine(WINDOW *window, int row, int column, std::string &buffer, std::size_t size) {
    buffer.clear();
    moveToCell(window, row, column, 0);
    for (;;) {
        wrefresh(window);
        const int key = readKey();
        if (key == EDIT_ERASE_KEY) {
            eraseLast(window, row, column, buffer);
        } else if (key < ' ' || key > '~') {
            return static_cast<int>(buffer.size());
        } else if (buffer.size() < size - 1) {
            waddch(window, static_cast<chtype>(key));
            buffer.push_back(static_cast<char>(key));
        }
    }
}
