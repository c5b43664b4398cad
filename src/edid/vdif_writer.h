// A monitor's EDID as a monitor file: the text form of VESA VDIF, as scrconf-vdif(5) has it.
//
// The monitor gets what it lists and nothing else. Its detailed timings are written with all
// fields, under the library's name when the library has the same numbers, else as
// <width>x<height>@<frames in a second>, "i" behind it for an interlaced one. Of its established
// and standard timings the names are written, and a comment names those that are left out: the
// library lacks them, they are beyond the range limits, or a detailed timing has the name.
//
// Precision: scrconf takes from the values the clock to 10 kHz and the lines of the EDID exactly,
// and the pixels rounded up to a multiple of 8: the size, the start of the sync pulse and the
// total; its end is the rounded start and its length, rounded up once more.
#pragma once

#include <string>

#include "edid/edid_decoder.h"

// The whole file. Empty when the EDID lists no timing that can be written: a detailed one needs a
// sync pulse within each blanking, lines of 2 to 65.535 µs and frames of up to 65.535 ms, which is
// what VDIF holds.
std::string vdifText(const Edid &edid);
