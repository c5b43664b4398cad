#include "frame/text_scanner.h"

#include <algorithm>
#include <cstdint>

std::string_view skipWhiteSpace(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(SCAN_WHITE_SPACE), text.size()));
}

std::optional<int> scanInt(std::string_view &text) {
    std::string_view rest = skipWhiteSpace(text);
    const bool negative = rest.starts_with('-');
    if (negative || rest.starts_with('+'))
        rest.remove_prefix(1);
    const std::size_t digits = std::min(rest.find_first_not_of("0123456789"), rest.size());
    if (digits == 0)
        return std::nullopt;
    std::uint32_t value = 0;
    for (const char digit : rest.substr(0, digits))
        value = value * 10 + static_cast<std::uint32_t>(digit - '0');
    text = rest.substr(digits);
    return static_cast<int>(negative ? 0 - value : value);
}

std::optional<std::string_view> scanWord(std::string_view &text, std::size_t maxLength) {
    const std::string_view rest = skipWhiteSpace(text);
    const std::string_view word =
        rest.substr(0, std::min(rest.find_first_of(SCAN_WHITE_SPACE), maxLength));
    if (word.empty())
        return std::nullopt;
    text = rest.substr(word.size());
    return word;
}

bool scanLiteral(std::string_view &text, std::string_view literal) {
    if (!text.starts_with(literal))
        return false;
    text.remove_prefix(literal.size());
    return true;
}
