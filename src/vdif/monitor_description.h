// Monitor descriptions: what a monitor can show, as an image of the binary form of VESA VDIF (Video
// Display Information Format) in memory.
//
// Image, little-endian; offsets and counts are unsigned 32-bit:
//     header           116 bytes
//     limits block     64 bytes, behind the header; may be missing
//     timing records   72 bytes each, behind the limits block
// Strings lie in one pool for all descriptions and are held as offsets into it; 0: empty text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Position in its block and width, both in bytes. A value is stored modulo 256 to the power of the
// width.
struct VdifField {
    std::uint8_t offset;
    std::uint8_t width;
};

// Fields carry VDIF's own names. What VDIF has besides them stays 0: lengths, checksum, borders,
// phosphor decay, white point, chromaticities and the offset of a string table of the image's own.
namespace HeaderField {
inline constexpr VdifField VdifVersion = {12, 2}, VdifRevision = {14, 2}; // 1.1: 1 and 100
// Year, month and day, 16 bits each.
inline constexpr VdifField Date = {16, 6}, DateManufactured = {22, 6};
// String offsets.
inline constexpr VdifField FileRevision = {28, 4}, Manufacturer = {32, 4}, ModelNumber = {36, 4},
                           MinVDIFIndex = {40, 4}, Version = {44, 4}, SerialNumber = {48, 4};
inline constexpr VdifField MonitorType = {52, 1}; // MONITOR_COLOR or MONITOR_MONOCHROME
inline constexpr VdifField CRTSize = {53, 1};     // inches
// Thousandths.
inline constexpr VdifField RedGamma = {90, 2}, GreenGamma = {92, 2}, BlueGamma = {94, 2};
inline constexpr VdifField LimitsCount = {96, 4};   // 0 or 1
inline constexpr VdifField LimitsOffset = {100, 4}; // from the start of the image
} // namespace HeaderField

namespace LimitsField {
inline constexpr VdifField MaxHorPixel = {8, 2}, MaxVerPixel = {10, 2};            // pixels, lines
inline constexpr VdifField MaxHorAddrLength = {12, 2}, MaxVerAddrHeight = {14, 2}; // mm
inline constexpr VdifField VideoType = {16, 1}, SyncType = {17, 1}, SyncConfiguration = {18, 1};
inline constexpr VdifField TerminationResistance = {22, 2}; // ohm
inline constexpr VdifField WhiteLevel = {24, 2}, BlackLevel = {26, 2}, BlankLevel = {28, 2},
                           SyncLevel = {30, 2};                                  // mV
inline constexpr VdifField MaxPixelClock = {32, 4};                              // kHz
inline constexpr VdifField MinHorFrequency = {36, 4}, MaxHorFrequency = {40, 4}; // Hz
inline constexpr VdifField MinVerFrequency = {44, 4}, MaxVerFrequency = {48, 4}; // mHz, of a field
inline constexpr VdifField MinHorRetrace = {52, 2}, MinVerRetrace = {54, 2};     // ns, µs
inline constexpr VdifField TimingCount = {56, 4};
} // namespace LimitsField

namespace TimingField {
inline constexpr VdifField Preadjustedtimingname = {8, 4};                        // string offset
inline constexpr VdifField HorPixel = {12, 2}, VerPixel = {14, 2};                // pixels, lines
inline constexpr VdifField HorAddrLength = {16, 2}, VerAddrHeight = {18, 2};      // mm
inline constexpr VdifField PixelWidthRatio = {20, 1}, PixelHeightRatio = {21, 1}; // width:height
inline constexpr VdifField ScanType = {23, 1}; // SCAN_INTERLACED or another
inline constexpr VdifField HorSyncPolarity = {24, 1}, VerSyncPolarity = {25, 1}; // 0: negative
inline constexpr VdifField CharacterWidth = {26, 2};                             // clock cycles
inline constexpr VdifField PixelClock = {28, 4};                                 // kHz
inline constexpr VdifField HorFrequency = {32, 4};                               // Hz
inline constexpr VdifField VerFrequency = {36, 4};                               // mHz, of a frame
inline constexpr VdifField HorTotalTime = {40, 4}, VerTotalTime = {44, 4};       // ns, µs
// ns.
inline constexpr VdifField HorAddrTime = {48, 4}, HorBlankStart = {52, 2}, HorBlankTime = {54, 2},
                           HorSyncStart = {56, 2}, HorSyncTime = {58, 2};
// µs.
inline constexpr VdifField VerAddrTime = {60, 2}, VerBlankStart = {62, 2}, VerBlankTime = {64, 2},
                           VerSyncStart = {66, 2}, VerSyncTime = {68, 2};
} // namespace TimingField

inline constexpr std::uint8_t MONITOR_MONOCHROME = 0, MONITOR_COLOR = 1;
inline constexpr std::uint8_t SCAN_INTERLACED = 1;      // of ScanType
inline constexpr std::uint8_t SYNC_CONFIG_ON_GREEN = 3; // of SyncConfiguration
inline constexpr std::size_t VDIF_HEADER_BLOCK = 0;     // offset of the header in the image

// The bytes of a header, limits block or timing record, until its description grows.
using VdifBlock = std::string_view;

struct MonitorDescription {
    std::string image;
    std::vector<std::uint32_t> timingsByName; // numbers of the records; see indexTimings
};

extern std::shared_ptr<const MonitorDescription> defaultDescription; // the timing library
extern std::shared_ptr<const MonitorDescription> currentDescription; // the monitor's
extern std::string stringPool; // each text with its NUL; kept until the process exits

// A description of the header only.
MonitorDescription makeDescription();

// The value of a field of up to 8 bytes, unsigned.
inline std::uint64_t fieldValue(VdifBlock block, VdifField field) {
    std::uint64_t value = 0;
    for (std::size_t byte = field.width; byte-- > 0;)
        value = value << 8 | static_cast<std::uint8_t>(block[field.offset + byte]);
    return value;
}

// Stores a value in a field of the block that begins at this offset of the image.
void setField(MonitorDescription &description, std::size_t block, VdifField field,
              std::uint64_t value);

VdifBlock headerBlock(const MonitorDescription &description);

// None before addLimits.
std::optional<VdifBlock> limitsBlock(const MonitorDescription &description);

// The number of timing records; 0 without a limits block.
std::size_t timingCount(const MonitorDescription &description);

// The caller keeps index < timingCount(description).
VdifBlock timingRecord(const MonitorDescription &description, std::size_t index);

// Adds the limits block, all 0, and returns its offset. Called once, before the first timing.
std::size_t addLimits(MonitorDescription &description);

// Adds a timing record behind the others and returns its offset: all 0, or a copy of another
// description's record. Needs the limits block.
std::size_t addTiming(MonitorDescription &description);
std::size_t addTiming(MonitorDescription &description, VdifBlock record);

// Makes findTiming know the records as they are now; of equal names the first record counts.
void indexTimings(MonitorDescription &description);

// The first timing record of exactly this name, of those that indexTimings knows.
std::optional<VdifBlock> findTiming(const MonitorDescription &description, std::string_view name);

// Adds a text to the string pool and returns its offset.
std::uint32_t addString(std::string_view text);

// The text of a string field, a NUL behind it; empty for an offset beyond all strings. Valid until
// a string is added to the pool.
std::string_view stringAt(std::uint64_t offset);

// The name of a timing record; empty when its section gave none.
std::string_view timingName(VdifBlock timing);
