#include "frame/paths.h"

const char *const CONFIG_PATH = "/etc/X11/Xconfig";
const char *const CONFIG_TEMP_PATH = "/etc/X11/Xconfig.tmp";
const char *const TEMPLATE_PATH = "/usr/lib/X11/Korvel/scrconf/Xconfig.tmpl";
const char *const CARD_LIST_PATH = "/usr/lib/X11/Korvel/scrconf/CardInfo";
const char *const POINTER_LIST_PATH = "/usr/lib/X11/Korvel/scrconf/MouseInfo";
const char *const DISPLAY_CONFIG_DIR = "/usr/lib/X11/Korvel/DisplayConfig/";
const char *const TIMING_LIBRARY_PATH = "/usr/lib/X11/Korvel/MonitorConfig/timings.vda";
const char *const VERSION_PATH = "/usr/lib/X11/Korvel/.version";
const char *const FONT_FALLBACK_PATH = "/usr/lib/X11/Korvel/fonts";
const std::array<const char *, 5> FONT_DIRECTORIES = {
    "/usr/lib/X11/fonts/pcf", "/usr/lib/X11/fonts", "/usr/X11/lib/X11/fonts",
    "/usr/X11R6/lib/X11/fonts", "/usr/openwin/lib/fonts"};
