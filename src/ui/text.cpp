#include "ui/text.h"

#include <cwchar>

#include "base/shown_text.h"

static constexpr int TEXT_TAB_CELLS = 8;
static constexpr std::string_view TEXT_CUT = "...";

// The first character of a text as it is shown.
struct Glyph {
    std::size_t bytes; // of the text
    int cells;
    std::wstring shown;
};

// Nothing that could move the cursor or change the terminal is shown: a control character takes no
// cell, and what cannot be shown becomes "?", byte by byte where it is no character at all.
static Glyph firstGlyph(std::string_view text, int column) {
    const char first = text.front();
    if (first == '\t') {
        const int cells = TEXT_TAB_CELLS - column % TEXT_TAB_CELLS;
        return {1, cells, std::wstring(static_cast<std::size_t>(cells), L' ')};
    }
    if ((first >= '\0' && first < ' ') || first == '\177')
        return {1, 0, {}};
    const Character character = firstCharacter(text);
    const int cells = character.valid ? wcwidth(character.wide) : -1;
    if (cells < 0)
        return {character.bytes, 1, L"?"};
    return {character.bytes, cells, std::wstring(1, character.wide)};
}

void putText(WINDOW *window, int row, int column, std::string_view text) {
    if (wmove(window, row, column) == ERR)
        return;
    while (!text.empty()) {
        const Glyph glyph = firstGlyph(text, column);
        if (column + glyph.cells > getmaxx(window))
            return;
        waddnwstr(window, glyph.shown.data(), static_cast<int>(glyph.shown.size()));
        column += glyph.cells;
        text.remove_prefix(glyph.bytes);
    }
}

// Curses itself wraps and expands tabs; it would also show and follow the control characters.
void putWrappedText(WINDOW *window, int row, int column, std::string_view text) {
    std::wstring shown;
    while (!text.empty()) {
        const Glyph glyph = firstGlyph(text, 0);
        shown += text.front() == '\t' ? L"\t" : glyph.shown;
        text.remove_prefix(glyph.bytes);
    }
    if (wmove(window, row, column) != ERR)
        waddnwstr(window, shown.data(), static_cast<int>(shown.size()));
}

int textCells(std::string_view text, int column) {
    const int first = column;
    while (!text.empty()) {
        const Glyph glyph = firstGlyph(text, column);
        column += glyph.cells;
        text.remove_prefix(glyph.bytes);
    }
    return column - first;
}

std::string shownEnd(std::string_view text, std::size_t maxBytes) {
    if (text.size() <= maxBytes)
        return std::string(text);
    return std::string(TEXT_CUT).append(text.substr(text.size() - (maxBytes - TEXT_CUT.size())));
}
