#include "edid/edid_decoder.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <string_view>

static constexpr std::array<std::uint8_t, 8> HEADER = {0, 255, 255, 255, 255, 255, 255, 0};
static constexpr std::size_t DESCRIPTOR_SIZE = 18, DESCRIPTORS_BEGIN = 54, DESCRIPTORS_END = 126;
static constexpr std::size_t STANDARD_TIMINGS = 38, STANDARD_TIMING_COUNT = 8;

// Tags of display descriptors, 3.10.3. Those from 0x11 to 0xf6 are reserved.
static constexpr int TAG_DUMMY = 0x10, TAG_ESTABLISHED_III = 0xf7, TAG_STANDARD = 0xfa,
                     TAG_NAME = 0xfc, TAG_RANGE = 0xfd, TAG_SERIAL = 0xff;
static constexpr int EXTENSION_CTA = 0x02, EXTENSION_BLOCK_MAP = 0xf0;

// A bit each, from the highest one of the first byte on: those of bytes 35 to 37, 3.8. The bits
// behind them are the maker's own.
static constexpr auto ESTABLISHED = std::to_array<std::string_view>(
    {"720x400@70", "720x400@88", "640x480@60", "640x480@67", "640x480@72", "640x480@75",
     "800x600@56", "800x600@60", "800x600@72", "800x600@75", "832x624@75", "1024x768@43i",
     "1024x768@60", "1024x768@70", "1024x768@75", "1280x1024@75", "1152x870@75"});
// Those of the descriptor, from its byte 6 on, 3.10.3.9.
static constexpr auto ESTABLISHED_III = std::to_array<std::string_view>(
    {"640x350@85",    "640x400@85",    "720x400@85",   "640x480@85",    "848x480@60",
     "800x600@85",    "1024x768@85",   "1152x864@75",  "1280x768@60R",  "1280x768@60",
     "1280x768@75",   "1280x768@85",   "1280x960@60",  "1280x960@85",   "1280x1024@60",
     "1280x1024@85",  "1360x768@60",   "1440x900@60R", "1440x900@60",   "1440x900@75",
     "1440x900@85",   "1400x1050@60R", "1400x1050@60", "1400x1050@75",  "1400x1050@85",
     "1680x1050@60R", "1680x1050@60",  "1680x1050@75", "1680x1050@85",  "1600x1200@60",
     "1600x1200@65",  "1600x1200@70",  "1600x1200@75", "1600x1200@85",  "1792x1344@60",
     "1792x1344@75",  "1856x1392@60",  "1856x1392@75", "1920x1200@60R", "1920x1200@60",
     "1920x1200@75",  "1920x1200@85",  "1920x1440@60", "1920x1440@75"});

// `count` bits of a byte, the lowest of them bit `first`.
static int bits(std::uint8_t byte, int first, int count) {
    return byte >> first & ((1 << count) - 1);
}

static bool sumIsZero(EdidBytes block) {
    return std::accumulate(block.begin(), block.end(), 0u) % 256 == 0;
}

static TimingAxis makeAxis(int active, int blank, int frontPorch, int sync) {
    return {active, active + frontPorch, active + frontPorch + sync, active + blank};
}

// The frame of two fields, whose totals end in half a line each.
static TimingAxis makeFrame(const TimingAxis &field) {
    return {field.active * 2, field.syncStart * 2, field.syncEnd * 2, field.total * 2 + 1};
}

// Detailed timing, 3.10.2. A composite signal has one polarity, which counts for both directions;
// an analogue one has negative pulses.
static MonitorTiming decodeTiming(EdidBytes d) {
    MonitorTiming timing;
    timing.clock = (d[0] + (d[1] << 8)) * 10;
    timing.horizontal = makeAxis(d[2] + (bits(d[4], 4, 4) << 8), d[3] + (bits(d[4], 0, 4) << 8),
                                 d[8] + (bits(d[11], 6, 2) << 8), d[9] + (bits(d[11], 4, 2) << 8));
    timing.vertical = makeAxis(d[5] + (bits(d[7], 4, 4) << 8), d[6] + (bits(d[7], 0, 4) << 8),
                               bits(d[10], 4, 4) + (bits(d[11], 2, 2) << 4),
                               bits(d[10], 0, 4) + (bits(d[11], 0, 2) << 4));
    timing.interlaced = bits(d[17], 7, 1);
    if (timing.interlaced)
        timing.vertical = makeFrame(timing.vertical);
    const bool digitalSync = bits(d[17], 4, 1), separateSync = bits(d[17], 3, 1);
    timing.hSyncPositive = digitalSync && bits(d[17], 1, 1);
    timing.vSyncPositive = digitalSync && bits(d[17], separateSync ? 2 : 1, 1);
    timing.width = d[12] + (bits(d[14], 4, 4) << 8);
    timing.height = d[13] + (bits(d[14], 0, 4) << 8);
    return timing;
}

// What keeps a detailed timing from being one; null for nothing.
static const char *timingFault(const MonitorTiming &timing) {
    if (timing.clock == 0)
        return "has a detailed timing with a clock of zero";
    if (timing.horizontal.active == 0 || timing.vertical.active == 0)
        return "has a detailed timing with a size of zero";
    return nullptr;
}

// The text of a descriptor, which ends with a line end or in blanks.
static std::string decodeText(EdidBytes text) {
    std::string decoded;
    for (const std::uint8_t byte : text) {
        if (byte == '\n')
            break;
        const bool harmless = byte >= ' ' && byte <= '~' && byte != '"' && byte != '\\';
        decoded += harmless ? static_cast<char>(byte) : '?';
    }
    return decoded.erase(decoded.find_last_not_of(' ') + 1);
}

static void addListed(Edid &edid, std::string_view name) {
    if (std::ranges::find(edid.listed, name) == edid.listed.end())
        edid.listed.emplace_back(name);
}

// A bit for each name of the table.
static void addEstablished(Edid &edid, EdidBytes bytes, std::span<const std::string_view> table) {
    for (std::size_t bit = 0; bit < table.size(); bit++)
        if (bits(bytes[bit / 8], 7 - static_cast<int>(bit % 8), 1))
            addListed(edid, table[bit]);
}

// Standard timings of two bytes each, 3.9: the width, the shape of the screen and the refresh rate.
// 01 01 stands where there is none; a width of 0 is reserved.
static void addStandard(Edid &edid, EdidBytes codes) {
    struct Shape {
        int width, height;
    };
    const std::array<Shape, 4> shapes = {
        edid.revision < 3 ? Shape{1, 1} : Shape{16, 10}, {4, 3}, {5, 4}, {16, 9}};
    for (; codes.size() >= 2; codes = codes.subspan(2)) {
        if (codes[0] == 0 || (codes[0] == 1 && codes[1] == 1))
            continue;
        const int width = (codes[0] + 31) * 8;
        const Shape shape = shapes[static_cast<std::size_t>(bits(codes[1], 6, 2))];
        addListed(edid, std::to_string(width) + "x" +
                            std::to_string(width * shape.height / shape.width) + "@" +
                            std::to_string(60 + bits(codes[1], 0, 6)));
    }
}

// Display range limits, 3.10.3.3; none when the bounds make no range. With the offsets of 1.4 the
// frequencies go beyond a byte, and a display with CVT support tells its clock more finely.
static std::optional<EdidRange> decodeRange(EdidBytes d, int revision) {
    const std::uint8_t offsets = revision >= 4 ? d[4] : 0;
    const auto offset = [offsets](int bit) { return bits(offsets, bit, 1) ? 255 : 0; };
    EdidRange range;
    range.maxVertical = d[6] + offset(1);
    range.minVertical = d[5] + (bits(offsets, 0, 2) == 3 ? 255 : 0);
    range.maxHorizontal = d[8] + offset(3);
    range.minHorizontal = d[7] + (bits(offsets, 2, 2) == 3 ? 255 : 0);
    range.maxClock = d[9] * 10'000;
    const bool hasCvt = revision >= 4 && d[10] == 4;
    if (hasCvt && d[9] != 0)
        range.maxClock -= bits(d[12], 2, 6) * 250;
    const bool valid = range.minVertical > 0 && range.minVertical <= range.maxVertical &&
                       range.minHorizontal > 0 && range.minHorizontal <= range.maxHorizontal;
    return valid ? std::optional(range) : std::nullopt;
}

static void decodeDescriptor(Edid &edid, EdidBytes d) {
    const EdidBytes text = d.subspan(5);
    switch (d[3]) {
    case TAG_NAME:
        edid.name = decodeText(text);
        break;
    case TAG_SERIAL:
        edid.serialNumber = decodeText(text);
        break;
    case TAG_RANGE:
        edid.range = decodeRange(d, edid.revision);
        break;
    case TAG_STANDARD:
        addStandard(edid, text.first(12));
        break;
    case TAG_ESTABLISHED_III:
        addEstablished(edid, text.subspan(1), ESTABLISHED_III);
        break;
    }
}

// Three letters of 5 bits, "A" being 1.
static std::string decodeManufacturer(EdidBytes id) {
    const int code = id[0] << 8 | id[1];
    std::string letters;
    for (const int shift : {10, 5, 0}) {
        const int letter = code >> shift & 31;
        letters += letter >= 1 && letter <= 26 ? static_cast<char>('A' + letter - 1) : '?';
    }
    return letters;
}

// Vendor and product identification, 3.4.
static void decodeProduct(Edid &edid, EdidBytes block) {
    edid.manufacturer = decodeManufacturer(block.subspan(8));
    edid.product = block[10] | block[11] << 8;
    const std::uint32_t serial =
        block[12] | block[13] << 8 | block[14] << 16 | static_cast<std::uint32_t>(block[15]) << 24;
    if (serial != 0)
        edid.serialNumber = std::to_string(serial);
    edid.year = 1990 + block[17];
}

// Basic display parameters and features, 3.6. Of a digital input, 1.4 has its colour formats where
// the kind of colour stands otherwise.
static void decodeDisplay(Edid &edid, EdidBytes block) {
    const bool digital = bits(block[20], 7, 1);
    edid.video = digital ? VideoInput::Digital : VideoInput::Analog;
    edid.color = (digital && edid.revision >= 4) || bits(block[24], 3, 2) != 0;
    const bool separate = bits(block[20], 3, 1), composite = bits(block[20], 2, 1);
    if (!digital && !separate && composite)
        edid.sync = SyncInput::Composite;
    else if (!digital && !separate && bits(block[20], 1, 1))
        edid.sync = SyncInput::CompositeOnGreen;
    if (block[21] != 0 && block[22] != 0) { // one of them alone gives the shape
        edid.width = block[21] * 10;
        edid.height = block[22] * 10;
    }
}

static bool isDescriptor(EdidBytes d) {
    const bool knownTag = d[3] <= TAG_DUMMY || d[3] >= TAG_ESTABLISHED_III;
    return d[0] == 0 && d[1] == 0 && d[2] == 0 && knownTag;
}

// The four places for detailed timings and descriptors, 3.10. Returns what is wrong; null: nothing.
static const char *decodeDescriptors(Edid &edid, EdidBytes block) {
    for (std::size_t at = DESCRIPTORS_BEGIN; at < DESCRIPTORS_END; at += DESCRIPTOR_SIZE) {
        const EdidBytes d = block.subspan(at, DESCRIPTOR_SIZE);
        if (isDescriptor(d)) {
            decodeDescriptor(edid, d);
            continue;
        }
        const MonitorTiming timing = decodeTiming(d);
        if (const char *fault = timingFault(timing))
            return fault;
        edid.detailed.push_back(timing);
    }
    return nullptr;
}

// The preferred timing has the size in mm, the display in cm.
static void refineSize(Edid &edid) {
    if (edid.detailed.empty() || edid.detailed[0].width == 0 || edid.detailed[0].height == 0)
        return;
    edid.width = edid.detailed[0].width;
    edid.height = edid.detailed[0].height;
}

static const char *decodeBase(Edid &edid, EdidBytes block) {
    edid.revision = block[19];
    decodeProduct(edid, block);
    decodeDisplay(edid, block);
    addEstablished(edid, block.subspan(35), ESTABLISHED);
    addStandard(edid, block.subspan(STANDARD_TIMINGS, STANDARD_TIMING_COUNT * 2));
    const char *fault = decodeDescriptors(edid, block);
    refineSize(edid);
    return fault;
}

// The detailed timings of a CTA-861 extension: they begin where byte 2 says, 0 being for none, and
// end at a clock of zero or before the block's last byte. Returns what is wrong; null: nothing.
static const char *decodeCta(Edid &edid, EdidBytes block) {
    const std::size_t begin = block[2];
    if (begin != 0 && (begin < 4 || begin >= EDID_BLOCK_SIZE))
        return "has its timings outside of it";
    std::vector<MonitorTiming> timings;
    for (std::size_t at = begin; at != 0 && at + DESCRIPTOR_SIZE < EDID_BLOCK_SIZE;
         at += DESCRIPTOR_SIZE) {
        timings.push_back(decodeTiming(block.subspan(at, DESCRIPTOR_SIZE)));
        if (timings.back().clock == 0) {
            timings.pop_back();
            break;
        }
        if (const char *fault = timingFault(timings.back()))
            return fault;
    }
    edid.detailed.insert(edid.detailed.end(), timings.begin(), timings.end());
    return nullptr;
}

// What is wrong with an extension; null for nothing. A block map has nothing of its own.
static const char *decodeExtension(Edid &edid, EdidBytes block) {
    if (block.size() < EDID_BLOCK_SIZE)
        return "is missing";
    if (!sumIsZero(block))
        return "has a bad checksum";
    if (block[0] == EXTENSION_CTA)
        return decodeCta(edid, block);
    return block[0] == EXTENSION_BLOCK_MAP ? nullptr : "is of a kind that is not read";
}

static void decodeExtensions(Edid &edid, EdidBytes bytes, std::size_t count) {
    for (std::size_t n = 1; n <= count; n++) {
        const std::size_t at = std::min(n * EDID_BLOCK_SIZE, bytes.size());
        const std::size_t size = std::min(EDID_BLOCK_SIZE, bytes.size() - at);
        if (const char *fault = decodeExtension(edid, bytes.subspan(at, size)))
            edid.lostExtensions.push_back("extension " + std::to_string(n) + " " + fault);
    }
}

std::string decodeEdid(EdidBytes bytes, Edid &edid) {
    if (bytes.empty())
        return "is empty: no monitor is attached, or it has no EDID";
    if (!std::ranges::equal(bytes.first(std::min(bytes.size(), HEADER.size())), HEADER))
        return "is no EDID";
    if (bytes.size() < EDID_BLOCK_SIZE)
        return "is too short for an EDID: " + std::to_string(bytes.size()) + " bytes of " +
               std::to_string(EDID_BLOCK_SIZE);
    const EdidBytes block = bytes.first(EDID_BLOCK_SIZE);
    if (!sumIsZero(block))
        return "has a bad checksum";
    if (block[18] != 1)
        return "is of EDID version " + std::to_string(block[18]) + ", which is not read";
    if (const char *fault = decodeBase(edid, block))
        return fault;
    decodeExtensions(edid, bytes, block[126]);
    return "";
}
