// Decoding a monitor's EDID: the base block of VESA E-EDID 1.0 to 1.4 and the detailed timings of
// CTA-861 extensions. Section numbers are those of E-EDID 1.4.
//
// Format, in blocks of 128 bytes whose sum is 0 modulo 256:
//     base block    00 ff ff ff ff ff ff 00, then fields at fixed places, among them four detailed
//                   timings or display descriptors of 18 bytes; byte 126: number of extensions
//     extension     its kind in byte 0: 02 CTA-861
// Of a digital input no colour depth, of the video no levels, and of the descriptors no CVT codes
// are read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "edid/monitor_timing.h"

inline constexpr std::size_t EDID_BLOCK_SIZE = 128;                 // bytes
inline constexpr std::size_t EDID_SIZE_MAX = EDID_BLOCK_SIZE * 256; // base block and extensions

using EdidBytes = std::span<const std::uint8_t>;

enum class VideoInput { Analog, Digital };                      // 3.6.1
enum class SyncInput { Separate, Composite, CompositeOnGreen }; // the first one that it takes

// Display range limits, 3.10.3.3, with the offsets of 1.4. Both bounds are part of the range.
struct EdidRange {
    int minVertical = 0, maxVertical = 0;     // Hz, of a field; 1 to 510
    int minHorizontal = 0, maxHorizontal = 0; // kHz; 1 to 510
    int maxClock = 0;                         // kHz; 0: not given
};

struct Edid {
    int revision = 0;         // of version 1: 0 to 4, 3.5
    std::string manufacturer; // three letters, 3.4.1; "?" for one that is none
    int product = 0;          // the maker's code, 3.4.2
    std::string name;         // display product name, 3.10.3.4; empty without one
    std::string serialNumber; // that of the descriptor, 3.10.3.1, else of 3.4.3; empty without
    int year = 0;             // of manufacture or of the model, 3.4.4; 1990 to 2245
    bool color = true;        // 3.6.4
    VideoInput video = VideoInput::Analog;
    SyncInput sync = SyncInput::Separate;
    int width = 0, height = 0; // mm: of the first detailed timing, else of 3.6.2; 0: unknown
    std::optional<EdidRange> range;
    std::vector<MonitorTiming> detailed; // 3.10.2 and CTA-861, the preferred one first
    // Established timings I to III and standard timings, 3.8, 3.9 and 3.10.3.9, each name once. The
    // library has most of them.
    std::vector<std::string> listed;
    std::vector<std::string> lostExtensions; // what is wrong with those that were left out
};

// Decodes an EDID. Returns what is wrong with its base block, as the end of a sentence that begins
// with its path, or an empty text; then `edid` holds what was read. Texts of the monitor have
// printable ASCII characters without quotes and backslashes only, others being "?".
std::string decodeEdid(EdidBytes bytes, Edid &edid);
