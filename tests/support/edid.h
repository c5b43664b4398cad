// EDIDs of monitors that were made up, and the modes that scrconf is to make of their timings.
#pragma once

#include <cstdio>
#include <cstring>
#include <numeric>
#include <string>
#include <vector>

#include "edid/monitor_timing.h"
#include "vdif/mode_timing.h"

using EdidImage = std::vector<std::uint8_t>;

// What `tools/make-edid monitor` writes.
inline EdidImage madeEdid(const std::string &monitor) {
    std::FILE *made = popen(("'" SCRCONF_SOURCE_DIR "/tools/make-edid' " + monitor).c_str(), "r");
    EdidImage edid(4096);
    edid.resize(std::fread(edid.data(), 1, edid.size(), made));
    pclose(made);
    return edid;
}

// Makes the checksum of each block right.
inline void seal(EdidImage &edid) {
    for (auto block = edid.begin(); edid.end() - block >= 128; block += 128)
        block[127] = static_cast<std::uint8_t>(-std::accumulate(block, block + 127, 0));
}

// True when a mode has the numbers of the timing, the pixels rounded up to a multiple of 8.
inline bool convertsBack(const ModeTiming &mode, const MonitorTiming &timing) {
    const auto up = [](auto pixels) { return static_cast<int>((pixels + 7) / 8 * 8); };
    const auto same = [](auto lines) { return static_cast<int>(lines); };
    const TimingAxis &h = timing.horizontal, &v = timing.vertical;
    const ModeTiming expected = {static_cast<float>(timing.clock) / 1000,
                                 up(h.active),
                                 up(h.syncStart),
                                 up(up(h.syncStart) + h.syncEnd - h.syncStart),
                                 up(h.total),
                                 same(v.active),
                                 same(v.syncStart),
                                 same(v.syncEnd),
                                 same(v.total),
                                 (timing.hSyncPositive ? MODE_PHSYNC : MODE_NHSYNC) |
                                     (timing.vSyncPositive ? MODE_PVSYNC : MODE_NVSYNC) |
                                     (timing.interlaced ? MODE_INTERLACE : 0)};
    return std::memcmp(&mode, &expected, sizeof mode) == 0;
}
