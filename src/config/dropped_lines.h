// Which lines of a configuration a save does not take over.
#pragma once

#include <string>
#include <string_view>

// The number of lines of `oldText` that are not in `newText`, each as often as it stands there.
// Blank lines do not count, nor do blanks at the ends of a line, longer runs of them, and those
// behind the "#" of a comment; tabs are blanks.
int countDroppedLines(std::string_view oldText, std::string_view newText);

// The text of a configuration without the lines that this run's choices replace: of each screen
// section that was configured in this run the card, the virtual size, the depth and the modes, and
// the pointer's lines once a pointer was chosen.
std::string withoutReplacedLines(std::string_view text);
