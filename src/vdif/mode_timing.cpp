#include "vdif/mode_timing.h"

#include <cstdlib>

#include "base/messages.h"

static bool tracing() { return std::getenv("VDIF_TRACE") != nullptr; }

static bool isInterlaced(VdifBlock timing) {
    return fieldValue(timing, TimingField::ScanType) == SCAN_INTERLACED;
}

int fitsOperationalLimits(VdifBlock limits, VdifBlock timing) {
    using namespace LimitsField;
    using namespace TimingField;
    const auto limit = [limits](VdifField field) { return fieldValue(limits, field); };
    const auto value = [timing](VdifField field) { return fieldValue(timing, field); };
    const std::uint64_t fieldRate = value(VerFrequency) * (isInterlaced(timing) ? 2 : 1);
    const struct {
        bool failed;
        const char *message;
    } tests[] = {
        {value(HorPixel) > limit(MaxHorPixel), "Above Maximum Horizontal Pixel Count\n"},
        {value(VerPixel) > limit(MaxVerPixel), "Above Maximum Vertical Pixel Count\n"},
        {value(HorFrequency) < limit(MinHorFrequency), "Below Minimum Horizontal Frequency\n"},
        {value(HorFrequency) > limit(MaxHorFrequency), "Above Maximum Horizontal Frequency\n"},
        {fieldRate > limit(MaxVerFrequency), "Above Maximum Vertical Frequency\n"},
        {fieldRate < limit(MinVerFrequency), "Below Minimum Vertical Frequency\n"},
        {value(PixelClock) > limit(MaxPixelClock), "Above Maximum Bandwidth\n"},
    };
    if (tracing())
        showMessage("Test: Mode %s \n", timingName(timing).data());
    int failures = 0;
    for (const auto &[failed, message] : tests) {
        failures += failed;
        if (failed && tracing())
            showMessage("%s", message);
    }
    return failures;
}

// The error number of the horizontal direction; the vertical one has each bit one place higher. The
// ratio of the blank's end to the total is compared in integers, exact at 0.9 and 1.1.
static unsigned directionErrors(std::uint64_t blankStart, std::uint64_t blankTime,
                                std::uint64_t syncStart, std::uint64_t total) {
    const std::uint64_t blankEnd = blankStart + blankTime;
    const bool blankOff = blankEnd * 10 < total * 9 || blankEnd * 10 > total * 11;
    return (blankOff ? 1u : 0) | (blankStart > syncStart ? 4u : 0) | (total < syncStart ? 16u : 0);
}

void checkTimingConsistency(VdifBlock timing) {
    using namespace TimingField;
    const auto value = [timing](VdifField field) { return fieldValue(timing, field); };
    const unsigned errors = directionErrors(value(HorBlankStart), value(HorBlankTime),
                                            value(HorSyncStart), value(HorTotalTime)) |
                            directionErrors(value(VerBlankStart), value(VerBlankTime),
                                            value(VerSyncStart), value(VerTotalTime))
                                << 1;
    if (errors != 0)
        showMessage("PreAdjustedTiming %s: error number %u\n", timingName(timing).data(), errors);
}

static int roundUpTo8(std::uint64_t pixels) { return static_cast<int>((pixels + 7) / 8 * 8); }

// The nearest line. Goes through 64 bits: the numbers of a broken file exceed an int.
static int nearestLine(double lines) {
    return static_cast<int>(static_cast<std::int64_t>(lines + 0.5));
}

// `limits` is the block of the timing's own description.
static ModeTiming timingToMode(VdifBlock timing, VdifBlock limits) {
    using namespace TimingField;
    const auto value = [timing](VdifField field) { return fieldValue(timing, field); };
    const std::uint64_t clock = value(PixelClock);
    const auto pixels = [&](VdifField time) { return value(time) * clock / 1'000'000; };
    // Lines per µs, held as a float: more digits would move a number that lies at half a line.
    const float rate = static_cast<float>(static_cast<double>(value(HorFrequency)) / 1'000'000);
    const auto lines = [&](VdifField time) { return rate * static_cast<double>(value(time)); };
    ModeTiming mode;
    mode.clock = static_cast<float>(clock) / 1000;
    mode.hDisplay = roundUpTo8(value(HorPixel));
    mode.hSyncStart = roundUpTo8(pixels(HorSyncStart));
    mode.hSyncEnd = roundUpTo8(pixels(HorSyncTime) + static_cast<unsigned>(mode.hSyncStart));
    mode.hTotal = roundUpTo8(pixels(HorTotalTime));
    mode.vDisplay = static_cast<int>(value(VerPixel));
    mode.vSyncStart = nearestLine(lines(VerSyncStart));
    mode.vSyncEnd = nearestLine(lines(VerSyncTime) + mode.vSyncStart);
    mode.vTotal = nearestLine(lines(VerTotalTime));
    mode.flags = isInterlaced(timing) ? MODE_INTERLACE : 0;
    mode.flags |= value(HorSyncPolarity) != 0 ? MODE_PHSYNC : MODE_NHSYNC;
    mode.flags |= value(VerSyncPolarity) != 0 ? MODE_PVSYNC : MODE_NVSYNC;
    if (fieldValue(limits, LimitsField::SyncConfiguration) == SYNC_CONFIG_ON_GREEN)
        mode.flags |= MODE_SYNC_ON_GREEN;
    return mode;
}

std::optional<ModeTiming> findTimingByName(std::string_view name) {
    const auto record = currentDescription ? findTiming(*currentDescription, name) : std::nullopt;
    if (!record)
        return std::nullopt;
    checkTimingConsistency(*record);
    return timingToMode(*record, *limitsBlock(*currentDescription));
}
