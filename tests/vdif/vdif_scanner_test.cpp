#include "vdif/vdif_scanner.h"

#include "readers/cases.h"

using VdifScannerTest = TempDirTest;

TEST_F(VdifScannerTest, TokensEndAndValuesAreKeptAsTheirKindWants) {
    expectCases("vdif-scanner.cases", [this](const std::string &kind, const std::string &text) {
        std::string shown;
        if (kind == "tokens") {
            VdifScanner scanner{.text = text};
            while (const auto token = nextToken(scanner))
                shown.append(*token).append("|");
            return shown;
        }
        for (const auto read : {readInt8, readInt16, readScaled16, readScaled32, readDate}) {
            VdifScanner scanner{.text = text};
            const VdifValue value = read(scanner);
            shown += (shown.empty() ? "" : " ") + (value ? std::to_string(*value) : "none");
        }
        return shown + "\n" + messages();
    });
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
