// Scanning the text form of VESA VDIF: words, quoted texts and the values that they stand for.
//
// Tokens:
//     -  =                  one character each
//     "text"                the bytes between the quotes as they are; \" does not end the text
//     letters digits . [ ] _ and a / that is not doubled      a word, in upper case
// Blanks, tabs, line ends and ( ) , ; { } separate tokens; // begins a comment, which lasts up to
// the line end. A NUL byte is a line end. Where any other byte begins a token, there is none.
// A quoted text and a word of the same characters are the same token. Of a longer token the first
// 127 bytes count.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

struct VdifToken {
    std::optional<std::string_view> text; // none: no token stands here
    std::size_t end = 0;                  // where scanning goes on behind it
};

struct VdifScanner {
    std::string text;         // the whole file; tokens refer to it, words become upper case in it
    std::size_t position = 0; // of the first byte not taken yet
    VdifToken ahead = {};     // the token found from `aheadFrom` on, so that it is scanned once
    std::size_t aheadFrom = std::string::npos;
};

// Takes the next token; none at the end of the text and, the byte being taken, at a byte that no
// token begins with.
std::optional<std::string_view> nextToken(VdifScanner &scanner);

// The operations below take nothing when they fail.

// Takes the next token when it is `word`.
bool expectWord(VdifScanner &scanner, std::string_view word);

// Takes the next two tokens when they are `key` and "=".
bool expectKey(VdifScanner &scanner, std::string_view key);

// A value as it is stored in a field, unsigned and modulo the field's width; none without a token.
using VdifValue = std::optional<std::uint64_t>;

// The next token as a text; none without a token.
std::optional<std::string_view> readText(VdifScanner &scanner);

// The next token as a decimal or, with an x as second character, hexadecimal integer of 8 or 16
// bits; what follows the digits is ignored and a token without digits is 0.
VdifValue readInt8(VdifScanner &scanner);
VdifValue readInt16(VdifScanner &scanner);

// The next token as a decimal number in thousandths, of 16 or 32 bits; further decimals are
// dropped: 31.4699 is 31469. A token that does not begin with an integer is reported and 0.
VdifValue readScaled16(VdifScanner &scanner);
VdifValue readScaled32(VdifScanner &scanner);

// Three integers separated by "/", 16 bits each with the first one lowest; none for other tokens.
VdifValue readDate(VdifScanner &scanner);

struct VdifName {
    std::string_view name;
    std::uint8_t value;
};

// The value of the first entry of this name; a name that is not in the table is reported and 0.
std::uint8_t lookupName(std::span<const VdifName> table, std::string_view name);
