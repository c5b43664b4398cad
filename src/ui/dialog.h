// Dialogs: a boxed line of text that waits for Enter or reads an answer, and the line editor behind
// it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "ui/window.h"

enum DialogKind {
    DIALOG_PROMPT = 1, // reads a line of text
    DIALOG_NOTICE = 2, // shows the text until Enter is pressed
};

// Shows a dialog with its top left corner at the given place of the terminal. The answer to a
// prompt has up to 1022 characters and is empty when Enter alone was pressed; a notice has none. A
// text that is too long for the layout is cut; the answer keeps its room.
std::optional<std::string> showDialog(int screenColumn, int screenRow, const std::string &text,
                                      DialogKind kind);

// Shows a notice at the place that all notices have.
void showNotice(const std::string &text);

// Reads a line of at most `size` - 1 printable ASCII characters, shown at the given place of the
// window, into `buffer`; returns its length. Control-H erases the last character; Enter, and every
// other byte that is not printable, ends the line.
int editLine(WINDOW *window, int row, int column, std::string &buffer, std::size_t size);
