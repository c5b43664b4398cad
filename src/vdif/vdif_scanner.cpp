#include "vdif/vdif_scanner.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

#include "frame/messages.h"
#include "frame/text_scanner.h"

enum class ByteClass : std::uint8_t { Invalid, LineEnd, Separator, Quote, Single, Slash, Word };

static constexpr std::string_view VDIF_LINE_ENDS("\0\n", 2);

static constexpr std::array<ByteClass, 256> makeByteClasses() {
    constexpr std::pair<std::string_view, ByteClass> members[] = {
        {VDIF_LINE_ENDS, ByteClass::LineEnd},
        {"\t\r\x1a (),;{}", ByteClass::Separator},
        {"\"", ByteClass::Quote},
        {"-=", ByteClass::Single},
        {"/", ByteClass::Slash},
        {".0123456789[]_", ByteClass::Word},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz", ByteClass::Word},
    };
    std::array<ByteClass, 256> classes{};
    for (const auto &[bytes, byteClass] : members)
        for (const char byte : bytes)
            classes[static_cast<std::uint8_t>(byte)] = byteClass;
    return classes;
}
static constexpr std::array<ByteClass, 256> BYTE_CLASSES = makeByteClasses();

static ByteClass classOf(char byte) { return BYTE_CLASSES[static_cast<std::uint8_t>(byte)]; }

static char upperCase(char byte) {
    return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
}

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
    return {std::string(bytes.substr(0, bytes.find('\0'))), std::min(end + 1, text.size())};
}

// The word whose first character stands at `position`.
static VdifToken scanUnquoted(std::string_view text, std::size_t position) {
    std::string word;
    while (position < text.size()) {
        const ByteClass byteClass = classOf(text[position]);
        if (byteClass != ByteClass::Word && byteClass != ByteClass::Slash)
            break;
        if (beginsComment(text, position))
            break;
        if (word.size() < VDIF_TOKEN_MAX)
            word.push_back(upperCase(text[position]));
        position++;
    }
    return {std::move(word), position};
}

static VdifToken scanToken(std::string_view text, std::size_t position) {
    while (position < text.size()) {
        switch (classOf(text[position])) {
        case ByteClass::Invalid:
            return {std::nullopt, position + 1};
        case ByteClass::Single:
            return {std::string(text.substr(position, 1)), position + 1};
        case ByteClass::Quote:
            return scanQuoted(text, position);
        case ByteClass::Slash:
        case ByteClass::Word:
            if (!beginsComment(text, position))
                return scanUnquoted(text, position);
            position = std::min(text.find_first_of(VDIF_LINE_ENDS, position), text.size());
            break;
        case ByteClass::LineEnd:
        case ByteClass::Separator:
            position++;
            break;
        }
    }
    return {std::nullopt, position};
}

// The next token, not taken yet.
static const VdifToken &peekToken(VdifScanner &scanner) {
    if (scanner.aheadFrom != scanner.position) {
        scanner.ahead = scanToken(scanner.text, scanner.position);
        scanner.aheadFrom = scanner.position;
    }
    return scanner.ahead;
}

std::optional<std::string> nextToken(VdifScanner &scanner) {
    VdifToken token = peekToken(scanner);
    scanner.position = token.end;
    return std::move(token.text);
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

std::optional<std::string> readText(VdifScanner &scanner) {
    return peekToken(scanner).text ? nextToken(scanner) : std::nullopt;
}

// Field: the unsigned type as wide as the field.
template <typename Field>
static VdifValue readValue(VdifScanner &scanner, std::int64_t (*parse)(const std::string &)) {
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

std::int64_t parseNumber(const std::string &token) {
    const bool hexadecimal = token.size() > 1 && upperCase(token[1]) == 'X';
    return std::strtoll(token.c_str(), nullptr, hexadecimal ? 16 : 10);
}

std::int64_t parseScaled(const std::string &token) {
    std::string_view rest = token;
    const auto whole = scanInt(rest);
    if (!whole) {
        showMessage("Invalid Scaled Int %s\n", token.c_str());
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

std::uint8_t lookupName(std::span<const VdifName> table, const std::string &name) {
    const auto found = std::ranges::find(table, name, &VdifName::name);
    if (found != table.end())
        return found->value;
    showMessage("Token %s not found\n", name.c_str());
    return 0;
}
