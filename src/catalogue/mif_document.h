// The catalogue as the body of the table in a FrameMaker document, in Maker Interchange Format
// (MIF).
#pragma once

#include "catalogue/catalogue.h"

extern const CatalogueFormatter mifFormatter;

// Replaces the table body of the document at `path` by the catalogue; a document without one gets
// the catalogue at its end. The lines before the old body and after it stay byte for byte. With
// marks, cells show a check mark in place of refresh rates.
//
// The document is replaced whole, by way of a file with the process id behind its name. Where the
// catalogue cannot be built the process ends, the document stays as it was and that file holds
// what was written. A document that cannot be read or written ends the process with status 1 as
// well and stays as it was, but for the message that the new one is in place; no other file is left
// then.
void updateMifCatalogue(const char *path, bool marks);
