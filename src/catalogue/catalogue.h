// The supported-card catalogue as a table of cards by resolution and colour depth.
#pragma once

// Both operations refuse so far, which ends the process with status 1. With marks, cells are to
// show a mark in place of refresh rates.

// Replaces the table body of the MIF document at `path` by the catalogue.
void updateMifCatalogue(const char *path, int marks);

// Writes the catalogue as an HTML page to `path`.
void writeHtmlCatalogue(const char *path, int marks);
