#include "catalogue/catalogue.h"

#include "frame/messages.h"

// Neither format is written yet: the commands refuse, so that no document is taken for a catalogue.
[[noreturn]] static void refuseCatalogue(const char *path) {
    fatalError("Cannot write %s: this version has no catalogue\n", path);
}

void updateMifCatalogue(const char *path, int) { refuseCatalogue(path); }

void writeHtmlCatalogue(const char *path, int) { refuseCatalogue(path); }
