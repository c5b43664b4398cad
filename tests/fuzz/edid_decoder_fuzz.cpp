// EDIDs, as they are and with header, version and checksums made right: the monitor file is read
// beside the shipped library, and each timing of the maker alone converts back.
#include <algorithm>

#include "edid/vdif_writer.h"
#include "fuzz/fuzz.h"
#include "support/edid.h"
#include "vdif/vdif_reader.h"

static constexpr const char *LIBRARY = SCRCONF_SOURCE_DIR "/data/Korvel/MonitorConfig/timings.vda";
static constexpr std::size_t TIMINGS_MAX = 8; // so many are converted

static std::size_t libraryStrings = 0; // what stands before the strings of the monitor file

// Makes the monitor file the current description; false when there is nothing to write.
static bool convert(const Edid &edid) {
    const std::string text = vdifText(edid);
    require(std::ranges::all_of(text, [](char c) { return c == '\n' || (c >= ' ' && c <= '~'); }),
            "the file has printable characters only");
    stringPool.resize(libraryStrings);
    writeFile("monitor", text);
    if (!text.empty())
        loadMonitorDescriptions(LIBRARY, "monitor");
    return !text.empty();
}

static void check(const EdidImage &image) {
    Edid edid;
    if (!decodeEdid(image, edid).empty() || !convert(edid))
        return;
    require(timingCount(*currentDescription) > 0, "the timings are read");
    edid.detailed.resize(std::min(edid.detailed.size(), TIMINGS_MAX));
    for (const MonitorTiming &timing : edid.detailed) {
        Edid alone;
        alone.detailed = {timing};
        if (!convert(alone))
            continue;
        const auto mode = findTimingByName(timingName(timingRecord(*currentDescription, 0)));
        require(mode && convertsBack(*mode, timing), "a timing converts back");
    }
}

void checkInput(std::string_view input) {
    if (libraryStrings == 0) {
        loadMonitorDescriptions(LIBRARY, nullptr);
        libraryStrings = stringPool.size();
    }
    EdidImage image(input.begin(), input.end());
    check(image);
    if (image.size() < EDID_BLOCK_SIZE)
        return;
    std::ranges::copy(EdidImage{0, 255, 255, 255, 255, 255, 255, 0}, image.begin());
    image[18] = 1;
    seal(image);
    check(image);
}
