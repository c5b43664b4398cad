// Taking numbers and words off the front of a text by the rules of scanf: white space before a
// field is skipped, and what an operation takes is gone from `text`. An operation that fails leaves
// `text` as it was.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// `text` without the white space at its front: that of ASCII, whatever the locale.
std::string_view skipWhiteSpace(std::string_view text);

// "%d": a decimal integer with an optional sign. Of a number beyond 32 bits the low 32 bits count.
std::optional<int> scanInt(std::string_view &text);

// "%s" with a width: at least one character up to white space; of a longer word the first
// `maxLength` characters are taken and the rest stays in `text`.
std::optional<std::string_view> scanWord(std::string_view &text,
                                         std::size_t maxLength = std::string_view::npos);

// Takes `literal` when `text` begins with it; white space is not skipped.
bool scanLiteral(std::string_view &text, std::string_view literal);

// `text` without its last character when that is a line end; only one is removed.
std::string_view chopNewline(std::string_view text);

// A copy of what chopNewline leaves of `text`.
std::string copyLine(std::string_view text);
