#include "vdif/vdif_scanner.h"

#include <vector>

#include "support/temp_dir.h"

using VdifScannerTest = TempDirTest;

static std::vector<std::string> tokens(std::string text) {
    VdifScanner scanner{.text = std::move(text)};
    std::vector<std::string> found;
    while (const auto token = nextToken(scanner))
        found.emplace_back(*token);
    return found;
}

TEST_F(VdifScannerTest, TokensEndWhereTheirKindEnds) {
    using Tokens = std::vector<std::string>;
    EXPECT_EQ(
        tokens("[Version]1.0 //\"no\"\nKey=\"a \\\" B\",x\"\";-5\x1a{/usr/x}y//z\n/"),
        (Tokens{"[VERSION]1.0", "KEY", "=", "a \\\" B", "X", "", "-", "5", "/USR/X", "Y", "/"}));
    using namespace std::string_literals;
    EXPECT_EQ(tokens("a\0b//c\0d \"e\0f\" \"rest\ng"s),
              (Tokens{"A", "B", "D", "e", "rest\ng"})); // NUL: line end, end of a quoted text
    const std::string longest(127, '7'), cut = longest + "8";
    EXPECT_EQ(tokens(longest + "=" + cut + "=\"" + longest + "\"\"" + cut + "\"x"),
              (Tokens{longest, "=", longest, "=", longest, longest, "X"}));
}

TEST_F(VdifScannerTest, WhatDoesNotMatchIsNotTaken) {
    VdifScanner scanner{.text = "key // =\n \"=\" word = 1996.5.12 $ last"};
    EXPECT_FALSE(expectWord(scanner, "WORD"));
    EXPECT_FALSE(expectKey(scanner, "WORD"));
    EXPECT_TRUE(expectKey(scanner, "KEY"));
    EXPECT_FALSE(expectKey(scanner, "="));
    EXPECT_TRUE(expectKey(scanner, "WORD"));
    EXPECT_FALSE(readDate(scanner));
    EXPECT_EQ(readInt16(scanner), 1996u);
    EXPECT_FALSE(readInt8(scanner)); // an invalid byte: no token, however often it is tried
    EXPECT_FALSE(expectWord(scanner, "LAST"));
    EXPECT_FALSE(nextToken(scanner)); // this takes the byte
    EXPECT_TRUE(expectWord(scanner, "LAST"));
    EXPECT_FALSE(readText(scanner));
}

TEST_F(VdifScannerTest, ValuesAreStoredModuloTheirField) {
    const struct {
        std::string text;
        std::uint64_t int8, int16, scaled16, scaled32;
    } cases[] = {
        {"0x1F", 31, 31, 0, 0},           {"255", 255, 255, 58392, 255000},
        {"256", 0, 256, 59392, 256000},   {"65535", 255, 65535, 64536, 65535000},
        {"65536", 0, 0, 0, 65536000},     {"65.535", 65, 65, 65535, 65535},
        {"65.536", 65, 65, 0, 65536},     {"4294967.295", 55, 35127, 65535, 4294967295},
        {"4294967.296", 55, 35127, 0, 0}, {"\"-1\"", 255, 65535, 64536, 4294966296},
        {"\"-0.5\"", 0, 0, 500, 500}, // the sign belongs to the integer 0
        {"31.5", 31, 31, 31500, 31500},   {"1.23456", 1, 1, 1234, 1234},
        {"12.", 12, 12, 12000, 12000},    {"18446744073709551621", 255, 65535, 5000, 5000},
    };
    for (const auto &[text, int8, int16, scaled16, scaled32] : cases) {
        SCOPED_TRACE(text);
        VdifScanner scanner{.text = text + " " + text + " " + text + " " + text};
        EXPECT_EQ(readInt8(scanner), int8);
        EXPECT_EQ(readInt16(scanner), int16);
        EXPECT_EQ(readScaled16(scanner), scaled16);
        EXPECT_EQ(readScaled32(scanner), scaled32);
    }
    VdifScanner date{.text = "1996/65535/65537"};
    EXPECT_EQ(readDate(date), 1996u | 65535u << 16 | std::uint64_t{1} << 32);
    EXPECT_EQ(messages(), "");
    static constexpr VdifName names[] = {{"ONE", 1}, {"TWO", 2}};
    EXPECT_EQ(lookupName(names, "TWO"), 2);
    EXPECT_EQ(lookupName(names, "two"), 0);
    VdifScanner word{.text = "fast"};
    EXPECT_EQ(readScaled32(word), 0u);
    EXPECT_EQ(messages(), "Token two not found\nInvalid Scaled Int FAST\n");
}
