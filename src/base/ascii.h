// Kinds and cases of ASCII characters. The operations of the C library follow the locale, in which
// a byte of a UTF-8 character may count as white space or as a letter; these never take it for one.
#pragma once

constexpr bool isWhiteSpace(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

constexpr bool isDigit(char character) { return character >= '0' && character <= '9'; }

constexpr char upperCase(char character) {
    return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A')
                                                : character;
}

constexpr char lowerCase(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}
