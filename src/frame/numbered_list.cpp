#include "frame/numbered_list.h"

#include <unistd.h>

#include <cstdio>
#include <string>

#include "base/file.h"
#include "base/number_text.h"
#include "base/shown_text.h"

static constexpr std::size_t LIST_NUMBER_WIDTH = 3; // characters; larger numbers take more

// Bytes of lines that are written at once. One line more still fits the stream's 4096 bytes, so
// what cannot be written stays there until the close, which tries again and tells the reason.
static constexpr std::size_t LIST_BLOCK_SIZE = 2048;

void printNumberedList(const CardEntry *head) {
    const auto write = isatty(STDOUT_FILENO) ? writeShown : writeText;
    std::string lines;
    for (int number = 1; head; head = head->next, number++) {
        const std::string_view name = head->name;
        appendNumber(lines, number, LIST_NUMBER_WIDTH);
        lines.append(". ").append(name.substr(name.find(':') + 1)).push_back('\n');
        if (lines.size() >= LIST_BLOCK_SIZE || !head->next) {
            write(stdout, lines);
            lines.clear();
        }
    }
}
