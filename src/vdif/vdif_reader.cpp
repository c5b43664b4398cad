#include "vdif/vdif_reader.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <span>
#include <utility>

#include "base/file.h"
#include "base/messages.h"
#include "vdif/mode_timing.h"
#include "vdif/vdif_scanner.h"

// The first states read a section or a part of one each; the others end reading.
enum VdifState {
    STATE_START,
    STATE_VERSION,
    STATE_MONITOR_DESCRIPTION,
    STATE_COLOR,
    STATE_MONOCHROME,
    STATE_OPERATIONAL_LIMITS,
    STATE_PREADJ_TIMINGS,
    STATE_ESTABLISHED_TIMINGS,
    STATE_GAMMA_TABLE,
    STATE_FINISHED,
};

struct VdifReader {
    VdifScanner scanner;
    MonitorDescription description;
    bool establishedGiven = false; // the file says which timings of the library it wants
    std::size_t nextField = 0;     // entry of VDIF_TIMING_FIELDS that is tried first
};

struct VdifSection {
    std::string_view header;
    VdifState state;
};
static constexpr VdifSection VDIF_LIMITS_SECTION = {"[OPERATIONAL_LIMITS]",
                                                    STATE_OPERATIONAL_LIMITS};
static constexpr VdifSection VDIF_TIMING_SECTION = {"[PREADJUSTED_TIMING]", STATE_PREADJ_TIMINGS};
static constexpr VdifSection VDIF_ESTABLISHED_SECTION = {"[ESTABLISHED_TIMINGS]",
                                                         STATE_ESTABLISHED_TIMINGS};
static constexpr VdifSection VDIF_GAMMA_SECTION = {"[GAMMA_TABLE_ENTRIES]", STATE_GAMMA_TABLE};

static constexpr auto VDIF_MONITOR_TYPES = std::to_array<VdifName>(
    {{"COLOR", MONITOR_COLOR}, {"COLOUR", MONITOR_COLOR}, {"MONOCHROME", MONITOR_MONOCHROME}});
static constexpr auto VDIF_VIDEO_TYPES =
    std::to_array<VdifName>({{"ANALOG", 1}, {"TTL", 0}, {"ECL", 2}, {"DECL", 3}, {"OTHER", 4}});
static constexpr auto &VDIF_SYNC_TYPES = VDIF_VIDEO_TYPES;
static constexpr auto VDIF_SYNC_CONFIGURATIONS = std::to_array<VdifName>(
    {{"SEPARATE", 0}, {"C", 1}, {"CP", 2}, {"G", SYNC_CONFIG_ON_GREEN}, {"GP", 4}, {"OTHER", 5}});
static constexpr auto VDIF_SCAN_TYPES =
    std::to_array<VdifName>({{"NONINTERLACED", 0}, {"INTERLACED", SCAN_INTERLACED}, {"OTHER", 2}});
static constexpr auto VDIF_POLARITIES = std::to_array<VdifName>({{"NEGATIVE", 0}, {"POSITIVE", 1}});

// A text's offset in the string pool.
static VdifValue readString(VdifScanner &scanner) {
    const auto text = readText(scanner);
    return text ? VdifValue(addString(*text)) : std::nullopt;
}

template <const auto &TABLE> static VdifValue readName(VdifScanner &scanner) {
    const auto name = readText(scanner);
    return name ? VdifValue(lookupName(TABLE, *name)) : std::nullopt;
}

// 0 for a value that is not kept; none without a token, as the others.
static VdifValue skipValue(VdifScanner &scanner) {
    return readText(scanner) ? VdifValue(0) : std::nullopt;
}

using ValueReader = VdifValue (*)(VdifScanner &);

struct KeyedField {
    std::string_view key;
    ValueReader read;
    VdifField field;
    VdifValue missing = 0; // the field's value when the key is missing; none: the key is required
};
static constexpr VdifValue VDIF_REQUIRED = std::nullopt, VDIF_OPTIONAL = 0,
                           VDIF_GAMMA_DEFAULT = 1000;

static constexpr auto VDIF_DESCRIPTION_FIELDS = std::to_array<KeyedField>({
    {"DATE", readDate, HeaderField::Date, VDIF_REQUIRED},
    {"FILEREVISION", readString, HeaderField::FileRevision, VDIF_REQUIRED},
    {"MANUFACTURER", readString, HeaderField::Manufacturer, VDIF_REQUIRED},
    {"MODELNUMBER", readString, HeaderField::ModelNumber, VDIF_REQUIRED},
    {"MINVDIFINDEX", readString, HeaderField::MinVDIFIndex, VDIF_OPTIONAL},
    {"VERSION", readString, HeaderField::Version, VDIF_OPTIONAL},
    {"SERIALNUMBER", readString, HeaderField::SerialNumber, VDIF_OPTIONAL},
    {"DATEMANUFACTURED", readDate, HeaderField::DateManufactured, VDIF_OPTIONAL},
    {"MONITORTYPE", readName<VDIF_MONITOR_TYPES>, HeaderField::MonitorType, VDIF_REQUIRED},
    {"CRTSIZE", readInt8, HeaderField::CRTSize, VDIF_REQUIRED},
});
// Keys whose values are not kept, behind the one that leads to the state.
static constexpr auto VDIF_COLOR_SKIPPED = std::to_array<std::string_view>(
    {"GREENPHOSPHORDECAY", "BLUEPHOSPHORDECAY", "BORDERRED", "BORDERGREEN", "BORDERBLUE",
     "WHITEPOINTX", "WHITEPOINTY", "WHITEPOINTCAPY", "REDCHROMATICITYX", "REDCHROMATICITYY",
     "GREENCHROMATICITYX", "GREENCHROMATICITYY", "BLUECHROMATICITYX", "BLUECHROMATICITYY"});
static constexpr auto VDIF_MONOCHROME_SKIPPED = std::to_array<std::string_view>(
    {"PHOSPHOR2DECAY", "PHOSPHOR3DECAY", "BORDER", "WHITEPOINTX", "WHITEPOINTY", "WHITEPOINTCAPY",
     "PHOSP1CHROMATICITYX", "PHOSP1CHROMATICITYY", "PHOSP2CHROMATICITYX", "PHOSP2CHROMATICITYY",
     "PHOSP3CHROMATICITYX", "PHOSP3CHROMATICITYY", "GAMMA"});
// A gamma that is given is not kept either.
static constexpr auto VDIF_COLOR_FIELDS = std::to_array<KeyedField>({
    {"REDGAMMA", skipValue, HeaderField::RedGamma, VDIF_GAMMA_DEFAULT},
    {"GREENGAMMA", skipValue, HeaderField::GreenGamma, VDIF_GAMMA_DEFAULT},
    {"BLUEGAMMA", skipValue, HeaderField::BlueGamma, VDIF_GAMMA_DEFAULT},
});
static constexpr auto VDIF_LIMITS_FIELDS = std::to_array<KeyedField>({
    {"MAXHORPIXEL", readInt16, LimitsField::MaxHorPixel, VDIF_REQUIRED},
    {"MAXVERPIXEL", readInt16, LimitsField::MaxVerPixel, VDIF_REQUIRED},
    {"MAXHORADDRLENGTH", readInt16, LimitsField::MaxHorAddrLength, VDIF_REQUIRED},
    {"MAXVERADDRHEIGHT", readInt16, LimitsField::MaxVerAddrHeight, VDIF_REQUIRED},
    {"VIDEOTYPE", readName<VDIF_VIDEO_TYPES>, LimitsField::VideoType, VDIF_REQUIRED},
    {"TERMINATIONRESISTANCE", readInt16, LimitsField::TerminationResistance, VDIF_OPTIONAL},
    {"WHITELEVEL", readScaled16, LimitsField::WhiteLevel, VDIF_OPTIONAL},
    {"BLACKLEVEL", readScaled16, LimitsField::BlackLevel, VDIF_OPTIONAL},
    {"BLANKLEVEL", readScaled16, LimitsField::BlankLevel, VDIF_OPTIONAL},
    {"SYNCTYPE", readName<VDIF_SYNC_TYPES>, LimitsField::SyncType, VDIF_REQUIRED},
    {"SYNCCONFIGURATION", readName<VDIF_SYNC_CONFIGURATIONS>, LimitsField::SyncConfiguration,
     VDIF_REQUIRED},
    {"SYNCLEVEL", readScaled16, LimitsField::SyncLevel, VDIF_OPTIONAL},
    {"MAXPIXELCLOCK", readScaled32, LimitsField::MaxPixelClock, VDIF_OPTIONAL},
    {"MINHORFREQUENCY", readScaled32, LimitsField::MinHorFrequency, VDIF_OPTIONAL},
    {"MAXHORFREQUENCY", readScaled32, LimitsField::MaxHorFrequency, VDIF_OPTIONAL},
    {"MINVERFREQUENCY", readScaled32, LimitsField::MinVerFrequency, VDIF_OPTIONAL},
    {"MAXVERFREQUENCY", readScaled32, LimitsField::MaxVerFrequency, VDIF_OPTIONAL},
    {"MINHORRETRACE", readScaled16, LimitsField::MinHorRetrace, VDIF_OPTIONAL},
    {"MINVERRETRACE", readScaled16, LimitsField::MinVerRetrace, VDIF_OPTIONAL},
});
// In any order, none of them required.
static constexpr auto VDIF_TIMING_FIELDS = std::to_array<KeyedField>({
    {"PREADJUSTEDTIMINGNAME", readString, TimingField::Preadjustedtimingname},
    {"HORPIXEL", readInt16, TimingField::HorPixel},
    {"VERPIXEL", readInt16, TimingField::VerPixel},
    {"HORFREQUENCY", readScaled32, TimingField::HorFrequency},
    {"VERFREQUENCY", readScaled32, TimingField::VerFrequency},
    {"PIXELCLOCK", readScaled32, TimingField::PixelClock},
    {"CHARACTERWIDTH", readInt16, TimingField::CharacterWidth},
    {"HORADDRLENGTH", readInt16, TimingField::HorAddrLength},
    {"VERADDRHEIGHT", readInt16, TimingField::VerAddrHeight},
    {"PIXELWIDTHRATIO", readInt8, TimingField::PixelWidthRatio},
    {"PIXELHEIGHTRATIO", readInt8, TimingField::PixelHeightRatio},
    {"SCANTYPE", readName<VDIF_SCAN_TYPES>, TimingField::ScanType},
    {"HORSYNCPOLARITY", readName<VDIF_POLARITIES>, TimingField::HorSyncPolarity},
    {"VERSYNCPOLARITY", readName<VDIF_POLARITIES>, TimingField::VerSyncPolarity},
    {"HORTOTALTIME", readScaled32, TimingField::HorTotalTime},
    {"HORADDRTIME", readScaled32, TimingField::HorAddrTime},
    {"HORBLANKSTART", readScaled16, TimingField::HorBlankStart},
    {"HORBLANKTIME", readScaled16, TimingField::HorBlankTime},
    {"HORSYNCSTART", readScaled16, TimingField::HorSyncStart},
    {"HORSYNCTIME", readScaled16, TimingField::HorSyncTime},
    {"VERTOTALTIME", readScaled32, TimingField::VerTotalTime},
    {"VERADDRTIME", readScaled16, TimingField::VerAddrTime},
    {"VERBLANKSTART", readScaled16, TimingField::VerBlankStart},
    {"VERBLANKTIME", readScaled16, TimingField::VerBlankTime},
    {"VERSYNCSTART", readScaled16, TimingField::VerSyncStart},
    {"VERSYNCTIME", readScaled16, TimingField::VerSyncTime},
});

// The state of the section whose header comes next; finished when it is none of these.
static VdifState enterSection(VdifReader &reader, std::initializer_list<VdifSection> sections) {
    for (const VdifSection &section : sections)
        if (expectWord(reader.scanner, section.header))
            return section.state;
    return STATE_FINISHED;
}

// Reads keys in the order of their table into the block at this offset. False when a required key
// or the value of a key is missing.
static bool readFields(VdifReader &reader, std::size_t block, std::span<const KeyedField> table) {
    for (const KeyedField &entry : table) {
        const bool given = expectKey(reader.scanner, entry.key);
        const VdifValue value = given ? entry.read(reader.scanner) : entry.missing;
        if (!value)
            return false;
        setField(reader.description, block, entry.field, *value);
    }
    return true;
}

static VdifState readStart(VdifReader &reader) {
    return enterSection(reader, {{"[VERSION]", STATE_VERSION}});
}

// The version is a bare number without a key: 1.1 is version 1, revision 100.
static VdifState readVersion(VdifReader &reader) {
    const VdifValue version = readScaled32(reader.scanner);
    if (!version)
        return STATE_FINISHED;
    setField(reader.description, VDIF_HEADER_BLOCK, HeaderField::VdifVersion, *version / 1000);
    setField(reader.description, VDIF_HEADER_BLOCK, HeaderField::VdifRevision, *version % 1000);
    return enterSection(reader, {{"[MONITOR_DESCRIPTION]", STATE_MONITOR_DESCRIPTION}});
}

static VdifState readDescription(VdifReader &reader) {
    if (!readFields(reader, VDIF_HEADER_BLOCK, VDIF_DESCRIPTION_FIELDS))
        return STATE_FINISHED;
    if (expectKey(reader.scanner, "REDPHOSPHORDECAY"))
        return STATE_COLOR;
    if (expectKey(reader.scanner, "PHOSPHOR1DECAY"))
        return STATE_MONOCHROME;
    return enterSection(reader, {VDIF_LIMITS_SECTION});
}

// Passes over the value of the key that led here and over these keys, each of which may be missing.
static bool skipFields(VdifReader &reader, std::span<const std::string_view> keys) {
    return skipValue(reader.scanner) && std::ranges::all_of(keys, [&reader](std::string_view key) {
               return !expectKey(reader.scanner, key) || skipValue(reader.scanner);
           });
}

static VdifState readColor(VdifReader &reader) {
    setField(reader.description, VDIF_HEADER_BLOCK, HeaderField::MonitorType, MONITOR_COLOR);
    if (!skipFields(reader, VDIF_COLOR_SKIPPED) ||
        !readFields(reader, VDIF_HEADER_BLOCK, VDIF_COLOR_FIELDS))
        return STATE_FINISHED;
    return enterSection(reader, {VDIF_LIMITS_SECTION});
}

static VdifState readMonochrome(VdifReader &reader) {
    setField(reader.description, VDIF_HEADER_BLOCK, HeaderField::MonitorType, MONITOR_MONOCHROME);
    if (!skipFields(reader, VDIF_MONOCHROME_SKIPPED))
        return STATE_FINISHED;
    return enterSection(reader, {VDIF_LIMITS_SECTION});
}

static VdifState readLimits(VdifReader &reader) {
    if (limitsBlock(reader.description))
        return STATE_FINISHED;
    if (!readFields(reader, addLimits(reader.description), VDIF_LIMITS_FIELDS))
        return STATE_FINISHED;
    return enterSection(reader, {VDIF_TIMING_SECTION, VDIF_ESTABLISHED_SECTION});
}

// The field whose key comes next; null when no key of a timing does. Most files keep to the order
// of the table, so the search begins behind the field found last: to begin at the first each time
// makes the reading of a library take half as long again.
static const KeyedField *expectTimingField(VdifReader &reader) {
    constexpr std::size_t count = VDIF_TIMING_FIELDS.size();
    for (std::size_t tried = 0; tried < count; tried++) {
        const KeyedField &entry = VDIF_TIMING_FIELDS[reader.nextField];
        reader.nextField = (reader.nextField + 1) % count;
        if (expectKey(reader.scanner, entry.key))
            return &entry;
    }
    return nullptr;
}

static VdifState readTiming(VdifReader &reader) {
    const std::size_t block = addTiming(reader.description);
    while (const KeyedField *entry = expectTimingField(reader))
        if (const VdifValue value = entry->read(reader.scanner))
            setField(reader.description, block, entry->field, *value);
    // A second limits section may begin here, and ends the reading: a description has one.
    return enterSection(reader, {VDIF_TIMING_SECTION, VDIF_GAMMA_SECTION, VDIF_LIMITS_SECTION});
}

// A name comes along by its offset, since all descriptions share one string pool.
static void copyTiming(MonitorDescription &description, VdifBlock timing) {
    addTiming(description, timing);
    checkTimingConsistency(timing);
}

// Names follow up to the header of a section; as a quoted header is one, no name can be that.
static VdifState readEstablished(VdifReader &reader) {
    reader.establishedGiven = true;
    while (true) {
        const VdifState next =
            enterSection(reader, {VDIF_TIMING_SECTION, VDIF_LIMITS_SECTION, VDIF_GAMMA_SECTION});
        if (next != STATE_FINISHED)
            return next;
        const auto name = nextToken(reader.scanner);
        if (!name)
            return STATE_FINISHED;
        const auto timing =
            defaultDescription ? findTiming(*defaultDescription, *name) : std::nullopt;
        if (!timing) {
            showMessage("Can't find established timing %s\n", std::string(*name).c_str());
            return STATE_FINISHED;
        }
        copyTiming(reader.description, *timing);
    }
}

static void runStates(VdifReader &reader) {
    static constexpr std::array<VdifState (*)(VdifReader &), STATE_GAMMA_TABLE> READERS = {
        readStart,      readVersion, readDescription, readColor,
        readMonochrome, readLimits,  readTiming,      readEstablished};
    VdifState state = STATE_START;
    while (state < STATE_GAMMA_TABLE)
        state = READERS[state](reader);
}

// True when the description has all limits that decide which timings the monitor can show.
static bool limitsComplete(const MonitorDescription &description) {
    const auto limits = limitsBlock(description);
    static constexpr std::array DECIDING = {
        LimitsField::MaxPixelClock, LimitsField::MaxHorFrequency, LimitsField::MaxVerFrequency,
        LimitsField::MinHorFrequency, LimitsField::MinVerFrequency};
    return limits && std::ranges::all_of(DECIDING, [&limits](VdifField field) {
               return fieldValue(*limits, field) != 0;
           });
}

// Adds the timings of the library that the monitor can show.
static void completeDescription(MonitorDescription &description, const std::string &path) {
    if (!limitsComplete(description)) {
        showMessage("Invalid VDIF FILE %s, missing Operational Limits\n", path.c_str());
        return;
    }
    const std::size_t count = defaultDescription ? timingCount(*defaultDescription) : 0;
    for (std::size_t index = 0; index < count; index++) {
        const VdifBlock timing = timingRecord(*defaultDescription, index);
        if (fitsOperationalLimits(*limitsBlock(description), timing) == 0)
            copyTiming(description, timing);
    }
}

std::shared_ptr<const MonitorDescription> readMonitorDescription(const std::string &path,
                                                                 bool isLibrary) {
    const File file = openForReading(path);
    auto text = file ? readWhole(file.get()) : std::nullopt;
    if (!text)
        return nullptr;
    VdifReader reader;
    reader.scanner.text = std::move(*text);
    reader.description = makeDescription();
    runStates(reader);
    if (!reader.establishedGiven && !isLibrary)
        completeDescription(reader.description, path);
    indexTimings(reader.description);
    return std::make_shared<const MonitorDescription>(std::move(reader.description));
}

const MonitorDescription *loadMonitorDescriptions(const char *libraryPath,
                                                  const char *monitorPath) {
    if (libraryPath && !defaultDescription)
        defaultDescription = readMonitorDescription(libraryPath, true);
    if (monitorPath) {
        const bool isLibrary = libraryPath && std::string_view(monitorPath) == libraryPath;
        currentDescription = readMonitorDescription(monitorPath, isLibrary);
    } else {
        currentDescription = defaultDescription;
    }
    return currentDescription.get();
}
