#include "edid/vdif_writer.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>

#include "edid/library_timings.h"

static constexpr std::int64_t INCH = 254;                                  // tenths of a millimetre
static constexpr std::int64_t LINE_TIME_MIN = 2000, LINE_TIME_MAX = 65535; // ns
static constexpr std::int64_t FRAME_TIME_MAX = 65535;                      // µs
static constexpr std::int64_t CHARACTER_WIDTH_MAX = 9;                     // pixels
static constexpr std::int64_t RATIO_UNIT = 100, RATIO_MAX = 255; // of a pixel's width to its height

struct NamedTiming {
    std::string name;
    MonitorTiming timing;
};

// What is written of the timings, and what is not.
struct WrittenTimings {
    std::vector<NamedTiming> detailed, listed;
    std::vector<std::string> inexpressible, unknown, beyondLimits, ownName;
};

// What the limits of VDIF are made of, all in its units.
struct WrittenLimits {
    std::int64_t maxClock = 0;                         // kHz
    std::int64_t minHorizontal = 0, maxHorizontal = 0; // Hz
    std::int64_t minVertical = 0, maxVertical = 0;     // mHz
};

static bool rises(const TimingAxis &axis) {
    return axis.active <= axis.syncStart && axis.syncStart < axis.syncEnd &&
           axis.syncEnd <= axis.total;
}

// Where a pixel lies on its line, in ns. It is rounded up: converted back the result is cut off.
static std::int64_t pixelTime(const MonitorTiming &timing, std::int64_t pixels) {
    return (pixels * 1'000'000 + timing.clock - 1) / timing.clock;
}

// Where a line lies in its frame, in µs.
static std::int64_t linesTime(const MonitorTiming &timing, std::int64_t lines) {
    return nearestQuotient(lines * timing.horizontal.total * 1000, timing.clock);
}

// True when all values fit their fields and convert back. A line shorter than two units of the
// vertical times could not be told from the next one.
static bool isExpressible(const MonitorTiming &timing) {
    if (!rises(timing.horizontal) || !rises(timing.vertical))
        return false;
    const std::int64_t line = pixelTime(timing, timing.horizontal.total);
    return line >= LINE_TIME_MIN && line <= LINE_TIME_MAX &&
           linesTime(timing, timing.vertical.total) <= FRAME_TIME_MAX;
}

// The library tells reduced blanking by the name alone, so its name is taken for its numbers.
static std::string timingName(const MonitorTiming &timing) {
    for (const LibraryTiming &known : libraryTimings())
        if (known.timing.clock == timing.clock && known.timing.horizontal == timing.horizontal &&
            known.timing.vertical == timing.vertical)
            return std::string(known.name);
    return std::to_string(timing.horizontal.active) + "x" + std::to_string(timing.vertical.active) +
           "@" + std::to_string(nearestQuotient(frameRate(timing), 1000)) +
           (timing.interlaced ? "i" : "");
}

// A standard timing tells no reduced blanking: at 60 Hz it means the timing with it where VESA DMT
// has no other.
static const LibraryTiming *findListed(const std::string &name) {
    const LibraryTiming *known = findLibraryTiming(name);
    return known || !name.ends_with("@60") ? known : findLibraryTiming(name + "R");
}

// The range has whole Hz and kHz, so the rates are compared as such.
static bool isWithin(const EdidRange &range, const MonitorTiming &timing) {
    const std::int64_t horizontal = nearestQuotient(lineRate(timing), 1000),
                       vertical = nearestQuotient(fieldRate(timing), 1000);
    return horizontal >= range.minHorizontal && horizontal <= range.maxHorizontal &&
           vertical >= range.minVertical && vertical <= range.maxVertical &&
           (range.maxClock == 0 || timing.clock <= range.maxClock);
}

// A detailed timing is the maker's own word, so it is not compared with the range. scrconf takes
// the first timing of a name, and established ones stand first: one of the same name would hide the
// monitor's own numbers.
static void addListed(WrittenTimings &written, const Edid &edid, const std::string &name) {
    const LibraryTiming *known = findListed(name);
    if (!known)
        written.unknown.push_back(name);
    else if (edid.range && !isWithin(*edid.range, known->timing))
        written.beyondLimits.push_back(name);
    else if (std::ranges::find(written.detailed, known->name, &NamedTiming::name) !=
             written.detailed.end())
        written.ownName.push_back(name);
    else
        written.listed.push_back({std::string(known->name), known->timing});
}

static WrittenTimings chooseTimings(const Edid &edid) {
    WrittenTimings written;
    for (const MonitorTiming &timing : edid.detailed) {
        if (isExpressible(timing))
            written.detailed.push_back({timingName(timing), timing});
        else
            written.inexpressible.push_back(std::to_string(timing.horizontal.active) + "x" +
                                            std::to_string(timing.vertical.active));
    }
    for (const std::string &name : edid.listed)
        addListed(written, edid, name);
    return written;
}

static std::vector<MonitorTiming> allTimings(const WrittenTimings &written) {
    std::vector<MonitorTiming> timings;
    std::ranges::transform(written.detailed, std::back_inserter(timings), &NamedTiming::timing);
    std::ranges::transform(written.listed, std::back_inserter(timings), &NamedTiming::timing);
    return timings;
}

// The limits of the range descriptor, else those that the timings need.
static WrittenLimits makeLimits(const Edid &edid, const std::vector<MonitorTiming> &timings) {
    const auto [slowLine, fastLine] = std::ranges::minmax(timings, {}, lineRate);
    const auto [slowField, fastField] = std::ranges::minmax(timings, {}, fieldRate);
    WrittenLimits limits = {std::ranges::max(timings, {}, &MonitorTiming::clock).clock,
                            lineRate(slowLine), lineRate(fastLine), fieldRate(slowField),
                            fieldRate(fastField)};
    if (const auto &range = edid.range)
        limits = {range->maxClock != 0 ? range->maxClock : limits.maxClock,
                  range->minHorizontal * 1000, range->maxHorizontal * 1000,
                  range->minVertical * 1000, range->maxVertical * 1000};
    return limits;
}

static void addLine(std::string &text, const char *key, const std::string &value) {
    text.append(key).append(" = ").append(value).append("\n");
}

static void addNumber(std::string &text, const char *key, std::int64_t value) {
    addLine(text, key, std::to_string(value));
}

static void addText(std::string &text, const char *key, const std::string &value) {
    addLine(text, key, "\"" + value + "\"");
}

// A value that is given in thousandths of its unit in the file.
static void addDecimal(std::string &text, const char *key, std::int64_t thousandths) {
    const std::string decimals = std::to_string(1000 + thousandths % 1000).substr(1);
    addLine(text, key, std::to_string(thousandths / 1000) + "." + decimals);
}

// The diagonal in whole inches: each begins half an inch before it.
static std::int64_t diagonalInches(const Edid &edid) {
    const std::int64_t square = 100LL * (edid.width * edid.width + edid.height * edid.height);
    std::int64_t inches = 0;
    for (std::int64_t next = INCH / 2; next * next <= square; next += INCH)
        inches++;
    return inches;
}

static void addDescription(std::string &text, const Edid &edid) {
    char code[5];
    std::snprintf(code, sizeof code, "%04X", static_cast<unsigned>(edid.product) & 0xffff);
    text += "[VERSION]\n1.1\n\n[MONITOR_DESCRIPTION]\n";
    addLine(text, "Date", std::to_string(edid.year) + "/01/01");
    addText(text, "FileRevision", "EDID 1." + std::to_string(edid.revision));
    addText(text, "Manufacturer", edid.manufacturer);
    addText(text, "ModelNumber", edid.name.empty() ? code : edid.name);
    if (!edid.serialNumber.empty())
        addText(text, "SerialNumber", edid.serialNumber);
    addLine(text, "MonitorType", edid.color ? "Color" : "Monochrome");
    addNumber(text, "CRTSize", diagonalInches(edid));
}

static void addLimits(std::string &text, const Edid &edid,
                      const std::vector<MonitorTiming> &timings) {
    const auto width = [](const MonitorTiming &timing) { return timing.horizontal.active; };
    const auto height = [](const MonitorTiming &timing) { return timing.vertical.active; };
    const bool digital = edid.video == VideoInput::Digital;
    const bool onGreen = edid.sync == SyncInput::CompositeOnGreen;
    const WrittenLimits limits = makeLimits(edid, timings);
    text += "\n";
    if (!edid.range)
        text +=
            "// The EDID has no range limits: frequencies and clock are those of its timings.\n";
    text += "[OPERATIONAL_LIMITS]\n";
    addNumber(text, "MaxHorPixel", width(std::ranges::max(timings, {}, width)));
    addNumber(text, "MaxVerPixel", height(std::ranges::max(timings, {}, height)));
    addNumber(text, "MaxHorAddrLength", edid.width);
    addNumber(text, "MaxVerAddrHeight", edid.height);
    addLine(text, "VideoType", digital ? "Other" : "Analog");
    addLine(text, "SyncType", digital ? "Other" : onGreen ? "Analog" : "TTL");
    addLine(text, "SyncConfiguration",
            onGreen                             ? "G"
            : edid.sync == SyncInput::Composite ? "C"
                                                : "Separate");
    addDecimal(text, "MaxPixelClock", limits.maxClock);
    addDecimal(text, "MinHorFrequency", limits.minHorizontal);
    addDecimal(text, "MaxHorFrequency", limits.maxHorizontal);
    addDecimal(text, "MinVerFrequency", limits.minVertical);
    addDecimal(text, "MaxVerFrequency", limits.maxVertical);
}

static void addComment(std::string &text, const char *reason,
                       const std::vector<std::string> &names) {
    if (names.empty())
        return;
    text.append("// Left out, ").append(reason).append(":");
    for (const std::string &name : names)
        text.append(" ").append(name);
    text += "\n";
}

// The section stands there without names as well: without it scrconf would take all timings of the
// library that fit the limits, also those that the monitor does not list.
static void addEstablished(std::string &text, const WrittenTimings &written) {
    text += "\n// Timings of the library that the monitor lists.\n";
    addComment(text, "not in the library", written.unknown);
    addComment(text, "beyond the limits", written.beyondLimits);
    addComment(text, "a timing below has the name", written.ownName);
    text += "[ESTABLISHED_TIMINGS]\n";
    for (const NamedTiming &listed : written.listed)
        text.append("\"").append(listed.name).append("\"\n");
}

// The widest character that the horizontal numbers consist of, in pixels.
static std::int64_t characterWidth(const TimingAxis &axis) {
    std::int64_t width = CHARACTER_WIDTH_MAX;
    while (axis.active % width != 0 || axis.syncStart % width != 0 || axis.syncEnd % width != 0 ||
           axis.total % width != 0)
        width--;
    return width;
}

// The shape of a pixel as width to RATIO_UNIT, when the size of the picture is known.
static std::int64_t pixelRatio(const MonitorTiming &timing) {
    if (timing.width == 0 || timing.height == 0)
        return RATIO_UNIT;
    const std::int64_t ratio = nearestQuotient(RATIO_UNIT * timing.width * timing.vertical.active,
                                               timing.height * timing.horizontal.active);
    return std::clamp<std::int64_t>(ratio, 1, RATIO_MAX);
}

// The times of one direction; `time` gives that of a number of its pixels or lines.
template <typename Time>
static void addTimes(std::string &text, const std::string &direction, const TimingAxis &axis,
                     Time time) {
    const auto add = [&](const char *key, std::int64_t length) {
        addDecimal(text, (direction + key).c_str(), time(length));
    };
    add("TotalTime", axis.total);
    add("AddrTime", axis.active);
    add("BlankStart", axis.active);
    add("BlankTime", axis.total - axis.active);
    add("SyncStart", axis.syncStart);
    add("SyncTime", axis.syncEnd - axis.syncStart);
}

// The numbers of an axis as a mode line has them.
static std::string axisText(const TimingAxis &axis) {
    return " " + std::to_string(axis.active) + " " + std::to_string(axis.syncStart) + " " +
           std::to_string(axis.syncEnd) + " " + std::to_string(axis.total);
}

static void addTiming(std::string &text, const NamedTiming &named) {
    const MonitorTiming &timing = named.timing;
    const auto polarity = [](bool positive) { return positive ? "Positive" : "Negative"; };
    text += "\n//" + axisText(timing.horizontal) + " " + axisText(timing.vertical) + "\n";
    text += "[PREADJUSTED_TIMING]\n";
    addText(text, "PreadjustedTimingName", named.name);
    addNumber(text, "HorPixel", timing.horizontal.active);
    addNumber(text, "VerPixel", timing.vertical.active);
    addDecimal(text, "HorFrequency", lineRate(timing));
    addDecimal(text, "VerFrequency", frameRate(timing));
    addDecimal(text, "PixelClock", timing.clock);
    addNumber(text, "CharacterWidth", characterWidth(timing.horizontal));
    addNumber(text, "HorAddrLength", timing.width);
    addNumber(text, "VerAddrHeight", timing.height);
    addNumber(text, "PixelWidthRatio", pixelRatio(timing));
    addNumber(text, "PixelHeightRatio", RATIO_UNIT);
    addLine(text, "ScanType", timing.interlaced ? "Interlaced" : "NonInterlaced");
    addLine(text, "HorSyncPolarity", polarity(timing.hSyncPositive));
    addLine(text, "VerSyncPolarity", polarity(timing.vSyncPositive));
    addTimes(text, "Hor", timing.horizontal,
             [&](std::int64_t pixels) { return pixelTime(timing, pixels); });
    addTimes(text, "Ver", timing.vertical,
             [&](std::int64_t lines) { return linesTime(timing, lines); });
}

std::string vdifText(const Edid &edid) {
    const WrittenTimings written = chooseTimings(edid);
    const std::vector<MonitorTiming> timings = allTimings(written);
    if (timings.empty())
        return "";
    std::string text =
        "// What the monitor tells of itself, written by scrconf-edid(1). The format "
        "is that of\n// scrconf-vdif(5).\n\n";
    addDescription(text, edid);
    addLimits(text, edid, timings);
    addEstablished(text, written);
    addComment(text, "not within what this format holds", written.inexpressible);
    for (const NamedTiming &named : written.detailed)
        addTiming(text, named);
    return text;
}
