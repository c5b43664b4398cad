// Bits of the flags of a display mode, each written in the configuration as the keyword beside it.
// A timing of a monitor description never has DoubleScan or CompositeSync.
#pragma once

#include <cstdint>

inline constexpr std::uint32_t MODE_PHSYNC = 0x01;         // PHsync
inline constexpr std::uint32_t MODE_NHSYNC = 0x02;         // NHsync
inline constexpr std::uint32_t MODE_PVSYNC = 0x04;         // PVsync
inline constexpr std::uint32_t MODE_NVSYNC = 0x08;         // NVsync
inline constexpr std::uint32_t MODE_INTERLACE = 0x10;      // Interlace
inline constexpr std::uint32_t MODE_DOUBLE_SCAN = 0x20;    // DoubleScan
inline constexpr std::uint32_t MODE_COMPOSITE_SYNC = 0x40; // CompositeSync
inline constexpr std::uint32_t MODE_SYNC_ON_GREEN = 0x80;  // SyncOnGreen
