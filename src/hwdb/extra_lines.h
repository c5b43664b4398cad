// The pending extra lines: lines that begin with ":" in the card list and in the display entries.
// They are gathered here until the record that they belong to is finished.
#pragma once

#include <string>
#include <string_view>

// When the line begins with ":", stores its text from the third character on and returns true.
bool collectExtraLine(std::string_view line);

// The texts collected so far, each with a line end; the collector stays as it is.
const std::string &takeExtraLines();

// Empties the collector.
void clearExtraLines();
