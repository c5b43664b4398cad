#include "base/shown_text.h"

#include <cwchar>
#include <cwctype>

// A byte of 160 or more that is part of no character is a letter to a terminal, if anything.
static bool showsItself(const Character &character, char first) {
    if (first == '\n' || first == '\t')
        return true;
    if (character.valid)
        return !std::iswcntrl(static_cast<std::wint_t>(character.wide));
    return static_cast<unsigned char>(first) >= 160;
}

Character firstCharacter(std::string_view text) {
    wchar_t wide = 0;
    std::mbstate_t state = {};
    const std::size_t bytes = std::mbrtowc(&wide, text.data(), text.size(), &state);
    const bool valid = bytes > 0 && bytes <= text.size(); // others: NUL, incomplete, invalid
    return {valid ? bytes : 1, wide, valid};
}

// Written in runs: on standard error every write is a system call.
void writeShown(std::FILE *out, std::string_view text) {
    std::size_t run = 0; // bytes at the front of `text` that show themselves
    while (run < text.size()) {
        const Character character = firstCharacter(text.substr(run));
        if (showsItself(character, text[run])) {
            run += character.bytes;
            continue;
        }
        std::fwrite(text.data(), 1, run, out);
        std::fputc('?', out);
        text.remove_prefix(run + character.bytes);
        run = 0;
    }
    std::fwrite(text.data(), 1, text.size(), out);
}
