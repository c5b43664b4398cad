// The global region of the configuration: read, written and read again.
#include <map>
#include <vector>

#include "config/config_lines.h"
#include "config/config_writer.h"
#include "fuzz/fuzz.h"

using Values = std::vector<std::pair<LineState, std::string>>;
using Settings = std::map<std::string_view, Values>; // by keyword

// What is to be found again. A slot without a value is free for the next line of its keyword, and
// the buttons are those of the pointer device.
static Settings settingsOf(const ConfigLine *line) {
    Settings settings;
    for (; line; line = line->next) {
        if (line->state == LineState::Absent || line->keyword == "Buttons")
            continue;
        Values &values = settings[line->keyword];
        if (!values.empty() && values.back().second.empty())
            values.pop_back();
        values.emplace_back(line->state, line->value.value_or(""));
    }
    return settings;
}

static Settings readSettings(std::string_view text) {
    writeFile("Xconfig", text);
    freeList(configLines);
    const MemoryBound bound(text.size());
    configLines = readConfigLines("Xconfig");
    bound.check();
    return settingsOf(configLines);
}

void checkInput(std::string_view input) {
    const Settings settings = readSettings(input);
    std::string written;
    writeGlobalLines(written);
    if (linesFit(written, CONFIG_PIECE_MAX))
        require(readSettings(written) == settings, "the settings that are written are read again");
}
