// Numbers as text in the lines of long lists, where printf would take most of the time.
#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>

// Adds a decimal number to `text`, filled up with blanks on its left to at least `width`
// characters.
inline void appendNumber(std::string &text, std::int64_t number, std::size_t width) {
    std::array<char, 20> digits; // and the sign
    const char *const end = std::to_chars(digits.begin(), digits.end(), number).ptr;
    const auto length = static_cast<std::size_t>(end - digits.data());
    if (length < width)
        text.append(width - length, ' ');
    text.append(digits.data(), length);
}
