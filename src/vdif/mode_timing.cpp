#include "vdif/mode_timing.h"

#include <cstdlib>

#include "frame/messages.h"

struct LimitTest {
    VdifField value;
    VdifField limit;
    bool minimum; // the limit is the least value, not the greatest
    const char *message;
};
static constexpr LimitTest LIMIT_TESTS[] = {
    {TimingField::HorPixel, LimitsField::MaxHorPixel, false,
     "Above Maximum Horizontal Pixel Count\n"},
    {TimingField::VerPixel, LimitsField::MaxVerPixel, false,
     "Above Maximum Vertical Pixel Count\n"},
    {TimingField::HorFrequency, LimitsField::MinHorFrequency, true,
     "Below Minimum Horizontal Frequency\n"},
    {TimingField::HorFrequency, LimitsField::MaxHorFrequency, false,
     "Above Maximum Horizontal Frequency\n"},
    {TimingField::VerFrequency, LimitsField::MaxVerFrequency, false,
     "Above Maximum Vertical Frequency\n"},
    {TimingField::VerFrequency, LimitsField::MinVerFrequency, true,
     "Below Minimum Vertical Frequency\n"},
    {TimingField::PixelClock, LimitsField::MaxPixelClock, false, "Above Maximum Bandwidth\n"},
};

static bool tracing() { return std::getenv("VDIF_TRACE") != nullptr; }

static bool isInterlaced(VdifBlock timing) {
    return fieldValue(timing, TimingField::ScanType) == SCAN_INTERLACED;
}

static bool passesTest(const LimitTest &test, VdifBlock limits, VdifBlock timing) {
    std::uint64_t value = fieldValue(timing, test.value);
    if (test.value == TimingField::VerFrequency && isInterlaced(timing))
        value *= 2; // fields in a frame
    const std::uint64_t limit = fieldValue(limits, test.limit);
    return test.minimum ? value >= limit : value <= limit;
}

int fitsOperationalLimits(VdifBlock limits, VdifBlock timing) {
    if (tracing())
        showMessage("Test: Mode %s \n", timingName(*defaultDescription, timing).c_str());
    int failures = 0;
    for (const LimitTest &test : LIMIT_TESTS) {
        if (passesTest(test, limits, timing))
            continue;
        failures++;
        if (tracing())
            showMessage("%s", test.message);
    }
    return failures;
}

// The times of one direction that have to agree, in one unit.
struct TimingSpan {
    std::uint64_t blankStart, blankTime, syncStart, total;
};

// The error number of the horizontal direction; the vertical one has each bit one place higher. The
// ratio of the blank's end to the total is compared in integers, exact at 0.9 and 1.1.
static unsigned spanErrors(const TimingSpan &span) {
    const std::uint64_t blankEnd = span.blankStart + span.blankTime;
    unsigned errors = 0;
    if (blankEnd * 10 < span.total * 9 || blankEnd * 10 > span.total * 11)
        errors |= 1;
    if (span.blankStart > span.syncStart)
        errors |= 4;
    if (span.total < span.syncStart)
        errors |= 16;
    return errors;
}

void checkTimingConsistency(const MonitorDescription &description, VdifBlock timing) {
    const auto value = [timing](VdifField field) { return fieldValue(timing, field); };
    const TimingSpan horizontal = {
        value(TimingField::HorBlankStart), value(TimingField::HorBlankTime),
        value(TimingField::HorSyncStart), value(TimingField::HorTotalTime)};
    const TimingSpan vertical = {value(TimingField::VerBlankStart),
                                 value(TimingField::VerBlankTime), value(TimingField::VerSyncStart),
                                 value(TimingField::VerTotalTime)};
    const unsigned errors = spanErrors(horizontal) | spanErrors(vertical) << 1;
    if (errors != 0)
        showMessage("PreAdjustedTiming %s: error number %u\n",
                    timingName(description, timing).c_str(), errors);
}

static std::uint64_t roundUpTo8(std::uint64_t pixels) { return (pixels + 7) / 8 * 8; }

// Whole pixels in a time in ns at a clock in kHz.
static std::uint64_t pixelsIn(std::uint64_t time, std::uint64_t clock) {
    return time * clock / 1'000'000;
}

// The nearest line. Goes through 64 bits: the numbers of a broken file exceed an int.
static int nearestLine(double lines) {
    return static_cast<int>(static_cast<std::int64_t>(lines + 0.5));
}

static void convertHorizontal(ModeTiming &mode, VdifBlock timing) {
    const std::uint64_t clock = fieldValue(timing, TimingField::PixelClock);
    const auto pixels = [timing, clock](VdifField field) {
        return pixelsIn(fieldValue(timing, field), clock);
    };
    const std::uint64_t syncStart = roundUpTo8(pixels(TimingField::HorSyncStart));
    const std::uint64_t syncEnd = roundUpTo8(pixels(TimingField::HorSyncTime) + syncStart);
    mode.clock = static_cast<float>(clock) / 1000;
    mode.hDisplay = static_cast<int>(roundUpTo8(fieldValue(timing, TimingField::HorPixel)));
    mode.hSyncStart = static_cast<int>(syncStart);
    mode.hSyncEnd = static_cast<int>(syncEnd);
    mode.hTotal = static_cast<int>(roundUpTo8(pixels(TimingField::HorTotalTime)));
}

static void convertVertical(ModeTiming &mode, VdifBlock timing) {
    const auto value = [timing](VdifField field) {
        return static_cast<double>(fieldValue(timing, field));
    };
    // Lines per µs, held as a float: more digits would move a number that lies at half a line.
    const float rate = static_cast<float>(value(TimingField::HorFrequency) / 1'000'000);
    mode.vDisplay = static_cast<int>(fieldValue(timing, TimingField::VerPixel));
    mode.vSyncStart = nearestLine(rate * value(TimingField::VerSyncStart));
    mode.vSyncEnd = nearestLine(rate * value(TimingField::VerSyncTime) + mode.vSyncStart);
    mode.vTotal = nearestLine(rate * value(TimingField::VerTotalTime));
}

void timingToMode(ModeTiming &mode, VdifBlock timing, VdifBlock limits) {
    const auto value = [timing](VdifField field) { return fieldValue(timing, field); };
    convertHorizontal(mode, timing);
    convertVertical(mode, timing);
    mode.flags = isInterlaced(timing) ? TIMING_INTERLACE : 0;
    mode.flags |= value(TimingField::HorSyncPolarity) != 0 ? TIMING_PHSYNC : TIMING_NHSYNC;
    mode.flags |= value(TimingField::VerSyncPolarity) != 0 ? TIMING_PVSYNC : TIMING_NVSYNC;
    if (fieldValue(limits, LimitsField::SyncConfiguration) == SYNC_CONFIG_ON_GREEN)
        mode.flags |= TIMING_SYNC_ON_GREEN;
}

bool findTimingByName(ModeTiming &timing, std::string_view name) {
    if (!currentDescription)
        return false;
    const auto limits = limitsBlock(*currentDescription);
    const auto index = findTiming(*currentDescription, name);
    if (!limits || !index)
        return false;
    const VdifBlock record = timingRecord(*currentDescription, *index);
    timingToMode(timing, record, *limits);
    checkTimingConsistency(*currentDescription, record);
    return true;
}
