#include "base/text_scanner.h"

#include <algorithm>
#include <cstdint>

#include "base/ascii.h"

std::string_view skipWhiteSpace(std::string_view text) {
    while (!text.empty() && isWhiteSpace(text.front()))
        text.remove_prefix(1);
    return text;
}

std::optional<int> scanInt(std::string_view &text) {
    std::string_view rest = skipWhiteSpace(text);
    const bool negative = rest.starts_with('-');
    if (negative || rest.starts_with('+'))
        rest.remove_prefix(1);
    if (rest.empty() || !isDigit(rest.front()))
        return std::nullopt;
    std::uint32_t value = 0; // unsigned, because what does not fit is to wrap
    for (; !rest.empty() && isDigit(rest.front()); rest.remove_prefix(1))
        value = value * 10 + static_cast<std::uint32_t>(rest.front() - '0');
    text = rest;
    return static_cast<int>(negative ? 0 - value : value);
}

std::optional<std::string_view> scanWord(std::string_view &text, std::size_t maxLength) {
    const std::string_view rest = skipWhiteSpace(text);
    const auto wordEnd = std::ranges::find_if(rest.substr(0, maxLength), isWhiteSpace);
    const std::string_view word(rest.begin(), wordEnd);
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

std::string_view chopNewline(std::string_view text) {
    return text.substr(0, text.size() - (text.ends_with('\n') ? 1 : 0));
}

std::string copyLine(std::string_view text) { return std::string(chopNewline(text)); }
