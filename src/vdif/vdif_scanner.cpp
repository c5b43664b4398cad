#include "vdif/vdif_scanner.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

#include "base/ascii.h"
#include "base/messages.h"
#include "base/text_scanner.h"

// The first two stand between tokens.
enum class ByteClass : std::uint8_t { LineEnd, Separator, Invalid, Quote, Single, Slash, Word };

static constexpr std::size_t VDIF_TOKEN_MAX = 127; // bytes; the rest of a longer token is dropped
static constexpr std::string_view VDIF_LINE_ENDS("\0\n", 2);

static constexpr std::array<ByteClass, 256> makeByteClasses() {
    constexpr auto MEMBERS = std::to_array<std::pair<std::string_view, ByteClass>>({
        {VDIF_LINE_ENDS, ByteClass::LineEnd},
        {"\t\r\x1a (),;{}", ByteClass::Separator},
        {"\"", ByteClass::Quote},
        {"-=", ByteClass::Single},
        {"/", ByteClass::Slash},
        {".0123456789[]_", ByteClass::Word},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz", ByteClass::Word},
    });
    std::array<ByteClass, 256> classes;
    classes.fill(ByteClass::Invalid);
    for (const auto &[bytes, byteClass] : MEMBERS)
        for (const char byte : bytes)
            classes[static_cast<std::uint8_t>(byte)] = byteClass;
    return classes;
}
static constexpr std::array<ByteClass, 256> VDIF_BYTE_CLASSES = makeByteClasses();

static ByteClass classOf(char byte) { return VDIF_BYTE_CLASSES[static_cast<std::uint8_t>(byte)]; }

// What a byte becomes in a word; NUL for one that ends it.
static constexpr std::array<char, 256> makeWordBytes() {
    std::array<char, 256> bytes{};
    for (std::size_t byte = 0; byte < bytes.size(); byte++)
        if (VDIF_BYTE_CLASSES[byte] == ByteClass::Word ||
            VDIF_BYTE_CLASSES[byte] == ByteClass::Slash)
            bytes[byte] = upperCase(static_cast<char>(byte));
    return bytes;
}
static constexpr std::array<char, 256> VDIF_WORD_BYTES = makeWordBytes();

// True when two slashes, which begin a comment, stand at the position.
static bool beginsComment(std::string_view text, std::size_t position) {
    return text.substr(position).starts_with("//");
}

// The token whose opening quote stands at `open`. A NUL byte ends the token's text as it does in
// the string pool.
static VdifToken scanQuoted(std::string_view text, std::size_t open) {
    std::size_t close = text.find('"', open + 1);
    while (close != text.npos && text[close - 1] == '\\')
        close = text.find('"', close + 1);
    const std::size_t end = std::min(close, text.size());
    const std::string_view bytes = text.substr(open + 1, end - open - 1).substr(0, VDIF_TOKEN_MAX);
    return {bytes.substr(0, bytes.find('\0')), std::min(end + 1, text.size())};
}

// The word whose first character stands at `begin`. Its letters become upper case in the text,
// whose closing NUL ends a word as well.
static VdifToken scanUnquoted(std::string &text, std::size_t begin) {
    char *end = text.data() + begin;
    for (;; end++) {
        const char byte = VDIF_WORD_BYTES[static_cast<std::uint8_t>(*end)];
        if (byte == '\0' || (byte == '/' && end[1] == '/'))
            break;
        *end = byte;
    }
    const auto length = static_cast<std::size_t>(end - text.data()) - begin;
    return {std::string_view(text).substr(begin, std::min(length, VDIF_TOKEN_MAX)), begin + length};
}

static std::size_t findLineEnd(std::string_view text, std::size_t position) {
    while (position < text.size() && classOf(text[position]) != ByteClass::LineEnd)
        position++;
    return position;
}

// The position of the next byte that neither separates tokens nor belongs to a comment.
static std::size_t skipToToken(std::string_view text, std::size_t position) {
    while (position < text.size()) {
        if (classOf(text[position]) <= ByteClass::Separator)
            position++;
        else if (beginsComment(text, position))
            position = findLineEnd(text, position);
        else
            break;
    }
    return position;
}

static VdifToken scanToken(std::string &text, std::size_t position) {
    position = skipToToken(text, position);
    if (position == text.size())
        return {std::nullopt, position};
    switch (classOf(text[position])) {
    case ByteClass::Slash:
    case ByteClass::Word:
        return scanUnquoted(text, position);
    case ByteClass::Single:
        return {std::string_view(text).substr(position, 1), position + 1};
    case ByteClass::Quote:
        return scanQuoted(text, position);
    default:
        return {std::nullopt, position + 1};
    }
}

// The next token, not taken yet.
static const VdifToken &peekToken(VdifScanner &scanner) {
    if (scanner.aheadFrom != scanner.position) {
        scanner.ahead = scanToken(scanner.text, scanner.position);
        scanner.aheadFrom = scanner.position;
    }
    return scanner.ahead;
}

std::optional<std::string_view> nextToken(VdifScanner &scanner) {
    const VdifToken &token = peekToken(scanner);
    scanner.position = token.end;
    return token.text;
}

bool expectWord(VdifScanner &scanner, std::string_view word) {
    const VdifToken &token = peekToken(scanner);
    if (token.text != word)
        return false;
    scanner.position = token.end;
    return true;
}

bool expectKey(VdifScanner &scanner, std::string_view key) {
    const VdifToken &token = peekToken(scanner);
    if (token.text != key)
        return false;
    const VdifToken equals = scanToken(scanner.text, token.end);
    if (equals.text != "=")
        return false;
    scanner.position = equals.end;
    return true;
}

std::optional<std::string_view> readText(VdifScanner &scanner) {
    return peekToken(scanner).text ? nextToken(scanner) : std::nullopt;
}

static std::int64_t parseNumber(std::string_view token) {
    const bool hexadecimal = token.size() > 1 && upperCase(token[1]) == 'X';
    const std::string digits(token); // with a NUL behind them
    return std::strtoll(digits.c_str(), nullptr, hexadecimal ? 16 : 10);
}

// The decimals are added to the integer whatever its sign, and are not looked at: -0.5 is 500.
static std::int64_t parseScaled(std::string_view token) {
    std::string_view rest = token;
    const auto whole = scanInt(rest);
    if (!whole) {
        showMessage("Invalid Scaled Int %s\n", std::string(token).c_str());
        return 0;
    }
    std::int64_t value = std::int64_t{*whole} * 1000;
    if (!scanLiteral(rest, "."))
        return value;
    std::int64_t weight = 100;
    for (const char digit : rest.substr(0, 3)) {
        value += weight * (digit - '0');
        weight /= 10;
    }
    return value;
}

// Field: the unsigned type as wide as the field.
template <typename Field>
static VdifValue readValue(VdifScanner &scanner, std::int64_t (*parse)(std::string_view)) {
    const auto token = readText(scanner);
    return token ? VdifValue(static_cast<Field>(parse(*token))) : std::nullopt;
}

VdifValue readInt8(VdifScanner &scanner) { return readValue<std::uint8_t>(scanner, parseNumber); }

VdifValue readInt16(VdifScanner &scanner) { return readValue<std::uint16_t>(scanner, parseNumber); }

VdifValue readScaled16(VdifScanner &scanner) {
    return readValue<std::uint16_t>(scanner, parseScaled);
}

VdifValue readScaled32(VdifScanner &scanner) {
    return readValue<std::uint32_t>(scanner, parseScaled);
}

static VdifValue parseDate(std::string_view token) {
    std::uint64_t date = 0;
    for (unsigned part = 0; part < 3; part++) {
        if (part > 0 && !scanLiteral(token, "/"))
            return std::nullopt;
        const auto number = scanInt(token);
        if (!number)
            return std::nullopt;
        date |= std::uint64_t{static_cast<std::uint16_t>(*number)} << 16 * part;
    }
    return date;
}

VdifValue readDate(VdifScanner &scanner) {
    const VdifToken &token = peekToken(scanner);
    const VdifValue date = token.text ? parseDate(*token.text) : std::nullopt;
    if (date)
        scanner.position = token.end;
    return date;
}

std::uint8_t lookupName(std::span<const VdifName> table, std::string_view name) {
    const auto found = std::ranges::find(table, name, &VdifName::name);
    if (found != table.end())
        return found->value;
    showMessage("Token %s not found\n", std::string(name).c_str());
    return 0;
}
