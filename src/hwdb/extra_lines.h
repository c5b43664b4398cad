// The pending extra lines: lines that begin with ":" in the card list and in the display entries.
// They are gathered here until the record that they belong to is finished.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// When the line begins with ":", stores its text from the third character on, less its line end,
// and returns true.
bool collectExtraLine(std::string_view line);

// The texts collected so far; the collector stays as it is.
const std::vector<std::string> &takeExtraLines();

// Empties the collector.
void clearExtraLines();
