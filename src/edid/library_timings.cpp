#include "edid/library_timings.h"

#include <algorithm>
#include <array>

static constexpr auto LIBRARY_TIMINGS = std::to_array<LibraryTiming>({
#include "edid/library_timings.inc"
});

std::span<const LibraryTiming> libraryTimings() { return LIBRARY_TIMINGS; }

const LibraryTiming *findLibraryTiming(std::string_view name) {
    const auto found = std::ranges::find(LIBRARY_TIMINGS, name, &LibraryTiming::name);
    return found == LIBRARY_TIMINGS.end() ? nullptr : &*found;
}
