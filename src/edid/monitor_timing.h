// One timing of a monitor in pixels and lines, and the rates that follow from them.
#pragma once

#include <cstdint>

// One direction of a timing, in pixels or lines from the start of the active part. Borders count as
// blanking.
struct TimingAxis {
    std::int64_t active = 0, syncStart = 0, syncEnd = 0, total = 0;
    bool operator==(const TimingAxis &) const = default;
};

struct MonitorTiming {
    std::int64_t clock = 0; // pixel clock in kHz
    TimingAxis horizontal;  // pixels
    TimingAxis vertical;    // lines of a frame, of which an interlaced one has two fields
    bool interlaced = false;
    bool hSyncPositive = false, vSyncPositive = false;
    int width = 0, height = 0; // of the picture in mm; 0: unknown
};

// A quotient of positive numbers, rounded to the nearest integer.
constexpr std::int64_t nearestQuotient(std::int64_t dividend, std::int64_t divisor) {
    return (dividend + divisor / 2) / divisor;
}

// Lines in a second, in Hz. As for the other rates, neither the clock nor a total may be 0.
constexpr std::int64_t lineRate(const MonitorTiming &timing) {
    return nearestQuotient(timing.clock * 1000, timing.horizontal.total);
}

// Frames in a second, in mHz.
constexpr std::int64_t frameRate(const MonitorTiming &timing) {
    return nearestQuotient(timing.clock * 1'000'000,
                           timing.horizontal.total * timing.vertical.total);
}

// Fields in a second, in mHz: what the vertical limits of a monitor apply to.
constexpr std::int64_t fieldRate(const MonitorTiming &timing) {
    return frameRate(timing) * (timing.interlaced ? 2 : 1);
}
