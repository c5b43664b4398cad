// The fixed paths of the system, one table for all readers and writers.
#pragma once

#include <array>

extern const char *const CONFIG_PATH;         // the server configuration file
extern const char *const CONFIG_TEMP_PATH;    // the new configuration while it is written
extern const char *const TEMPLATE_PATH;       // stands in when no configuration can be read
extern const char *const CARD_LIST_PATH;      // supported cards by class
extern const char *const POINTER_LIST_PATH;   // pointer device types
extern const char *const DISPLAY_CONFIG_DIR;  // one folder per card class; ends in "/"
extern const char *const TIMING_LIBRARY_PATH; // standard timings, VDIF text form
extern const char *const CONNECTOR_DIR;       // one folder per connector of a graphics card
extern const char *const VERSION_PATH;        // its first line is the version of the server
extern const char *const FONT_FALLBACK_PATH;  // the server's own fonts
extern const std::array<const char *, 5> FONT_DIRECTORIES; // searched in this order
