// The standard timings (VESA DMT) that the installed library has, by the names that it gives them.
// They are compiled in from tools/timings.table, of which the library is made.
#pragma once

#include <span>
#include <string_view>

#include "edid/monitor_timing.h"

struct LibraryTiming {
    std::string_view name; // "1024x768@75"; "i" at its end: interlaced, "R": reduced blanking
    MonitorTiming timing;
};

std::span<const LibraryTiming> libraryTimings();

// The timing of exactly this name; null when the library has none.
const LibraryTiming *findLibraryTiming(std::string_view name);
