#include "base/paths.h"

// What all paths begin with. A test build sets it to nothing, so that they lead below its current
// directory.
#ifndef SCRCONF_ROOT
#define SCRCONF_ROOT "/"
#endif

const char *const CONFIG_PATH = SCRCONF_ROOT "etc/X11/Xconfig";
const char *const CONFIG_TEMP_PATH = SCRCONF_ROOT "etc/X11/Xconfig.tmp";
const char *const TEMPLATE_PATH = SCRCONF_ROOT "usr/lib/X11/Korvel/scrconf/Xconfig.tmpl";
const char *const CARD_LIST_PATH = SCRCONF_ROOT "usr/lib/X11/Korvel/scrconf/CardInfo";
const char *const POINTER_LIST_PATH = SCRCONF_ROOT "usr/lib/X11/Korvel/scrconf/MouseInfo";
const char *const DISPLAY_CONFIG_DIR = SCRCONF_ROOT "usr/lib/X11/Korvel/DisplayConfig/";
const char *const TIMING_LIBRARY_PATH = SCRCONF_ROOT "usr/lib/X11/Korvel/MonitorConfig/timings.vda";
const char *const CONNECTOR_DIR = SCRCONF_ROOT "sys/class/drm";
const char *const VERSION_PATH = SCRCONF_ROOT "usr/lib/X11/Korvel/.version";
const char *const FONT_FALLBACK_PATH = SCRCONF_ROOT "usr/lib/X11/Korvel/fonts";
const std::array<const char *, 5> FONT_DIRECTORIES = {
    SCRCONF_ROOT "usr/lib/X11/fonts/pcf", SCRCONF_ROOT "usr/lib/X11/fonts",
    SCRCONF_ROOT "usr/X11/lib/X11/fonts", SCRCONF_ROOT "usr/X11R6/lib/X11/fonts",
    SCRCONF_ROOT "usr/openwin/lib/fonts"};
