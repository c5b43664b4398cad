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
