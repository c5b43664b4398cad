// Monitor files: read beside the shipped library, read again with every token in quotes, and each
// timing looked up and converted.
#include "fuzz/fuzz.h"
#include "vdif/mode_timing.h"
#include "vdif/vdif_reader.h"
#include "vdif/vdif_scanner.h"

static const std::string LIBRARY = SCRCONF_SOURCE_DIR "/data/Korvel/MonitorConfig/timings.vda";

// What stands before the strings of the monitor file.
static std::size_t libraryStrings = 0;

static std::shared_ptr<const MonitorDescription> readMonitor(std::string_view text) {
    stringPool.resize(libraryStrings);
    stringPool.shrink_to_fit();
    writeFile("monitor", text);
    const MemoryBound bound(text.size());
    loadMonitorDescriptions(LIBRARY.c_str(), "monitor");
    bound.check();
    return currentDescription;
}

// The same tokens, each in quotes, up to the first byte that begins none. None when a token ends in
// a backslash: the quote behind it would belong to it.
static std::optional<std::string> quoteTokens(std::string_view text) {
    VdifScanner scanner{.text = std::string(text)};
    std::string quoted;
    while (const auto token = nextToken(scanner)) {
        if (token->ends_with('\\'))
            return std::nullopt;
        quoted.append("\"").append(*token).append("\"\n");
    }
    return quoted;
}

static void checkTimings(const MonitorDescription &description) {
    for (std::size_t index = 0; index < timingCount(description); index++) {
        const VdifBlock record = timingRecord(description, index);
        const std::string name(timingName(record));
        const auto found = findTiming(description, name);
        require(timingName(*found) == name && found->data() <= record.data(),
                "a name is that of its first timing");
        const auto mode = findTimingByName(name);
        require(mode && mode->hTotal % 8 == 0 && mode->hDisplay % 8 == 0,
                "every timing becomes a mode");
    }
}

void checkInput(std::string_view input) {
    if (libraryStrings == 0) {
        loadMonitorDescriptions(LIBRARY.c_str(), nullptr);
        libraryStrings = stringPool.size();
    }
    const auto description = readMonitor(input);
    const std::size_t blocks = limitsBlock(*description) ? 116 + 64 : 116; // bytes
    require(description->image.size() == blocks + 72 * timingCount(*description),
            "the image holds what it counts");
    checkTimings(*description);
    const std::string strings = stringPool;
    if (const auto quoted = quoteTokens(input))
        require(readMonitor(*quoted)->image == description->image && stringPool == strings,
                "a token in quotes is the same token");
}
