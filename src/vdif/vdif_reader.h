// Reading monitor descriptions from files in the text form of VESA VDIF.
//
// File format; keys and sections in any letter case, tokens as in vdif_scanner.h:
//     [VERSION] <number>
//     [MONITOR_DESCRIPTION]     <key> = <value> ..., in a fixed order
//     [OPERATIONAL_LIMITS]      <key> = <value> ..., in a fixed order; once
//     [PREADJUSTED_TIMING]      <key> = <value> ..., in any order; one section for each timing
//     [ESTABLISHED_TIMINGS]     <name> ...: timings of the library that the monitor knows
//     [GAMMA_TABLE_ENTRIES]     ends what is read
// Units: clocks in MHz, horizontal frequencies in kHz and times in µs, vertical ones in Hz and ms,
// levels in V, lengths in mm.
//
// Errors: where a required element is missing, reading ends and what was read so far counts; names
// that are not known, numbers that are none and inconsistent timings are reported.
#pragma once

#include <memory>
#include <string>

#include "vdif/monitor_description.h"

// Reads a file: the timing library or a monitor's. A monitor that does not list its established
// timings gets, behind its own, all timings of defaultDescription that fit its limits; it is
// reported when its limits are incomplete. Null when the file cannot be opened.
std::shared_ptr<const MonitorDescription> readMonitorDescription(const std::string &path,
                                                                 bool isLibrary);

// Reads the timing library into defaultDescription, unless it is there already, and the monitor's
// file into currentDescription, which without a monitor's file is the library. Either path may be
// null; of the same path both times the library is read once more. Returns the current description;
// null when its file cannot be opened.
const MonitorDescription *loadMonitorDescriptions(const char *libraryPath, const char *monitorPath);
