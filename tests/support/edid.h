// EDIDs of monitors that were made up, and the modes that scrconf is to make of their timings.
#pragma once

#include <numeric>
#include <string>
#include <vector>

#include "edid/monitor_timing.h"
#include "support/files.h"
#include "vdif/mode_timing.h"

using EdidImage = std::vector<std::uint8_t>;

// What `tools/make-edid monitor` writes.
inline EdidImage madeEdid(const std::string &monitor) {
    const std::string edid = outputOf("'" SCRCONF_SOURCE_DIR "/tools/make-edid' " + monitor);
    return {edid.begin(), edid.end()};
}

// Makes the checksum of each block right.
inline void seal(EdidImage &edid) {
    for (auto block = edid.begin(); edid.end() - block >= 128; block += 128)
        block[127] = static_cast<std::uint8_t>(-std::accumulate(block, block + 127, 0));
}

// True when a mode has the numbers of the timing, the pixels rounded up to a multiple of 8.
inline bool convertsBack(const ModeTiming &mode, const MonitorTiming &timing) {
    const auto up = [](std::int64_t pixels) { return (pixels + 7) / 8 * 8; };
    const TimingAxis &h = timing.horizontal, &v = timing.vertical;
    const std::int64_t start = up(h.syncStart), end = up(start + h.syncEnd - h.syncStart);
    const std::uint32_t flags = (timing.hSyncPositive ? MODE_PHSYNC : MODE_NHSYNC) |
                                (timing.vSyncPositive ? MODE_PVSYNC : MODE_NVSYNC) |
                                (timing.interlaced ? MODE_INTERLACE : 0);
    return mode.clock == static_cast<float>(timing.clock) / 1000 && mode.flags == flags &&
           mode.hDisplay == up(h.active) && mode.hSyncStart == start && mode.hSyncEnd == end &&
           mode.hTotal == up(h.total) && mode.vDisplay == v.active &&
           mode.vSyncStart == v.syncStart && mode.vSyncEnd == v.syncEnd && mode.vTotal == v.total;
}
