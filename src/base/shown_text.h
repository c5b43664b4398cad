// Text of files, paths and the environment on its way to a terminal, which must not take any of it
// for a command.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string_view>

// The first character of a text in the locale's encoding.
struct Character {
    std::size_t bytes; // of the text; 1 where no character begins
    wchar_t wide;
    bool valid; // a character begins there, a control character included
};

// The text is not empty.
Character firstCharacter(std::string_view text);

// Writes a text of which a terminal shows every byte: "?" stands in for control characters, line
// ends and tabs apart, and for those bytes of 128 to 159 that are no part of a character, which
// some terminals take for controls.
void writeShown(std::FILE *out, std::string_view text);
