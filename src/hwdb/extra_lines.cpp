#include "hwdb/extra_lines.h"

#include <algorithm>

#include "base/text_scanner.h"

static constexpr std::size_t EXTRA_TEXT_FROM = 2; // behind the ":" and one separator

static std::string pendingLines;

bool collectExtraLine(std::string_view line) {
    if (!line.starts_with(':'))
        return false;
    const auto text = line.substr(std::min(EXTRA_TEXT_FROM, line.size()));
    pendingLines.append(chopNewline(text)).push_back('\n');
    return true;
}

const std::string &takeExtraLines() { return pendingLines; }

void clearExtraLines() { pendingLines.clear(); }
