#include "base/text_scanner.h"

#include <gtest/gtest.h>

TEST(TextScannerTest, IntegersKeepTheirLow32Bits) {
    const struct {
        std::string_view text;
        std::optional<int> value;
        std::string_view rest;
    } cases[] = {
        {"2147483647", 2147483647, ""},         {"2147483648 ", -2147483647 - 1, " "},
        {"-2147483648x", -2147483647 - 1, "x"}, {"-2147483649", 2147483647, ""},
        {" \v+4294967295+", -1, "+"},           {"4294967296", 0, ""},
        {"+-7", std::nullopt, "+-7"},           {" -", std::nullopt, " -"},
    };
    for (const auto &given : cases) {
        std::string_view rest = given.text;
        EXPECT_EQ(scanInt(rest), given.value) << given.text;
        EXPECT_EQ(rest, given.rest) << given.text;
    }
}
