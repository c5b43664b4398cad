// Dialogs: a boxed line of text that waits for Enter or reads an answer. Control-H erases the last
// character of an answer; every other byte that is not printable ends it as Enter does.
#pragma once

#include <optional>
#include <string>

#include "ui/window.h"

enum DialogKind {
    DIALOG_PROMPT = 1, // reads a line of text
    DIALOG_NOTICE = 2, // shows the text until Enter is pressed
};

// Shows a dialog with its top left corner at the given place of the terminal. The answer to a
// prompt has up to 1022 printable ASCII characters and is empty when Enter alone was pressed; a
// notice has none. A text that is too long for the terminal is cut; the answer keeps its room.
std::optional<std::string> showDialog(int screenColumn, int screenRow, const std::string &text,
                                      DialogKind kind);

// Shows a notice at the place that all notices have.
void showNotice(const std::string &text);
