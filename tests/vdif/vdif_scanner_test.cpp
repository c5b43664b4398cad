#include "vdif/vdif_scanner.h"

#include <vector>

#include "support/temp_dir.h"

using VdifScannerTest = TempDirTest;

static std::vector<std::string> tokens(std::string text) {
    VdifScanner scanner{.text = std::move(text)};
    std::vector<std::string> found;
    while (const auto token = nextToken(scanner))
        found.push_back(*token);
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
    const std::string digits(200, '7'), cut(VDIF_TOKEN_MAX, '7');
    EXPECT_EQ(tokens(digits + "=\"" + digits + "\"x"), (Tokens{cut, "=", cut, "X"}));
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
    VdifScanner scanner{.text = "0x1F 300 70000 \"-1\" none 99999999999999999999 " // integers
                                "31.469 31.5 100 1.23456 100000.25 \"-0.5\" 12. "  // scaled
                                "1996/5/65537"};
    EXPECT_EQ(readInt16(scanner), 0x1fu);
    EXPECT_EQ(readInt8(scanner), 44u);
    EXPECT_EQ(readInt16(scanner), 4464u);
    EXPECT_EQ(readInt16(scanner), 65535u);
    EXPECT_EQ(readInt16(scanner), 0u);
    EXPECT_TRUE(readInt16(scanner));
    for (const std::uint32_t value : {31469u, 31500u, 100000u, 1234u, 100000250u})
        EXPECT_EQ(readScaled32(scanner), value);
    EXPECT_EQ(readScaled16(scanner), 500u); // the sign belongs to the integer 0
    EXPECT_EQ(readScaled16(scanner), 12000u);
    EXPECT_EQ(readDate(scanner), 1996u | 5u << 16 | std::uint64_t{1} << 32);
    EXPECT_EQ(parseScaled("2147483.647"), 2147483647);
    EXPECT_EQ(messages(), "");
    static constexpr VdifName names[] = {{"ONE", 1}, {"TWO", 2}};
    EXPECT_EQ(lookupName(names, "TWO"), 2);
    EXPECT_EQ(lookupName(names, "two"), 0);
    EXPECT_EQ(parseScaled("fast"), 0);
    EXPECT_EQ(messages(), "Token two not found\nInvalid Scaled Int fast\n");
}
