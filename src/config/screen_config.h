// Screen records: one for each X screen that the server drives, in the order of the configuration
// file.
//
// A screen section begins at a line that starts with "Driver " and runs up to the next such line or
// the end of the file. What is read of it:
//     Card <name>
//     Virtual <width> <height>    pixels
//     Depth <bits>                bits per pixel
//     Modes                       the mode lines follow
//     "<width>x<height>...        a mode line; what follows the two numbers is not read
//     ModeDB                      ends the reading, as does the end of the section
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "base/file.h"
#include "hwdb/card_list.h"
#include "hwdb/display_entry.h"

inline constexpr int SCREEN_MAX = 8;       // screens that a configuration can hold
inline constexpr int SCREEN_MODE_MAX = 99; // modes that are read of a section

inline constexpr std::string_view SCREEN_MODES = "Modes", SCREEN_MODE_DB = "ModeDB";

struct ModeSize {
    int width, height; // pixels
};

struct ScreenConfig {
    CardEntry *card = nullptr;  // the section's own, or of cardList once chosen there; null: none
    bool unchanged = true;      // the section's text is kept; else configured in this run
    ModeList modes;             // the section's modes, or those of the chosen card
    std::vector<int> selection; // chosen modes as positions in `modes`, from 1
    std::int32_t virtualWidth = 0; // pixels; 0: not known
    std::int32_t virtualHeight = 0;
    std::int32_t depth = 0; // bits per pixel; 0: not known
};

extern std::array<ScreenConfig, SCREEN_MAX> screens;
extern int screenCount;   // records in use
extern int currentScreen; // the X screen that this run configures, from 0

// The size that a mode line begins with; none when the line is no mode line.
std::optional<ModeSize> scanModeSize(std::string_view line);

// The screen section with the given index, from 0; none when the file has no such section. A file
// that cannot be opened ends the process; modes beyond SCREEN_MODE_MAX are reported and left out.
std::optional<ScreenConfig> parseScreenSection(const FilePlace &place, int index);

// Adds a screen that is still to be configured behind the last one.
// The caller keeps screenCount < SCREEN_MAX.
void appendPlaceholderScreen();
