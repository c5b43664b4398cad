#include "base/text_scanner.h"

#include "readers/cases.h"

TEST(TextScannerTest, IntegersKeepTheirLow32Bits) {
    expectCases("integers.cases", [](const std::string &, std::string_view text) {
        const auto value = scanInt(text);
        return (value ? std::to_string(*value) : "none") + "|" + std::string(text);
    });
}
