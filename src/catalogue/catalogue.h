// The supported-card catalogue as a table of cards by resolution and colour depth.
#pragma once

// Replaces the table body of the MIF document at `path` by the catalogue.
void updateMifCatalogue(const char *path, int marks);

// Writes the catalogue as an HTML page to `path`.
void writeHtmlCatalogue(const char *path, int marks);
