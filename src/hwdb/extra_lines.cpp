#include "hwdb/extra_lines.h"

#include <algorithm>

#include "frame/messages.h"

static constexpr std::size_t EXTRA_TEXT_FROM = 2; // behind the ":" and one separator

static std::vector<std::string> pendingLines;

bool collectExtraLine(std::string_view line) {
    if (!line.starts_with(':'))
        return false;
    pendingLines.push_back(copyLine(line.substr(std::min(EXTRA_TEXT_FROM, line.size()))));
    return true;
}

const std::vector<std::string> &takeExtraLines() { return pendingLines; }

void clearExtraLines() { pendingLines.clear(); }
