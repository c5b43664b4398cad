// The catalogue as an HTML page.
#pragma once

#include "catalogue/catalogue.h"

extern const CatalogueFormatter htmlFormatter;

// Writes the catalogue as an HTML page to `path`. With marks, cells show a check mark in place of
// refresh rates. A page that cannot be opened or written whole ends the process with status 1.
void writeHtmlCatalogue(const char *path, bool marks);
