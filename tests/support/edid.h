// EDIDs of monitors that were made up, and the timings of makers beside them.
#pragma once

#include <cstdint>
#include <numeric>
#include <vector>

// The library that is installed.
inline constexpr const char *TIMING_LIBRARY =
    SCRCONF_SOURCE_DIR "/data/Korvel/MonitorConfig/timings.vda";

using EdidImage = std::vector<std::uint8_t>;

// Makes the checksum of each block right.
inline void seal(EdidImage &edid) {
    for (auto block = edid.begin(); edid.end() - block >= 128; block += 128)
        block[127] = static_cast<std::uint8_t>(-std::accumulate(block, block + 127, 0));
}
