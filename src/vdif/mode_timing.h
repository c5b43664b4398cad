// What the timings of a monitor description are good for: whether a monitor can show one, whether
// its times agree with each other, and its numbers in a mode line of the server.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "vdif/mode_flags.h"
#include "vdif/monitor_description.h"

struct ModeTiming {
    float clock = 0;                                            // MHz
    int hDisplay = 0, hSyncStart = 0, hSyncEnd = 0, hTotal = 0; // pixels
    int vDisplay = 0, vSyncStart = 0, vSyncEnd = 0, vTotal = 0; // lines
    std::uint32_t flags = 0;                                    // MODE_ bits
};

// The number of limits that the timing, a record of defaultDescription, goes beyond; 0: it fits.
// Equality fits. The vertical limits apply to fields, of which an interlaced frame has two. With
// the environment variable VDIF_TRACE set, the timing and each limit it breaks are reported.
int fitsOperationalLimits(VdifBlock limits, VdifBlock timing);

// Reports a timing whose times contradict each other, with the sum of:
//     1, 2      blank start + blank time is not within 10 % of the total; horizontal, vertical
//     4, 8      the blank begins behind the start of the sync pulse; horizontal, vertical
//     16, 32    the sync pulse begins behind the total; horizontal, vertical
void checkTimingConsistency(VdifBlock timing);

// The first timing of currentDescription that has exactly this name, as a mode; none without one.
// Horizontal numbers are rounded up to a multiple of 8 pixels, vertical ones to the nearest line.
// A timing that is inconsistent is reported.
std::optional<ModeTiming> findTimingByName(std::string_view name);
