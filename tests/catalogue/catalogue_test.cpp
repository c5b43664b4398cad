#include "catalogue/catalogue.h"

#include <sys/resource.h>

#include <csignal>
#include <regex>

#include "base/file.h"
#include "base/paths.h"
#include "catalogue/html_page.h"
#include "catalogue/mif_document.h"
#include "hwdb/display_entry.h"
#include "support/temp_dir.h"

static constexpr bool MARKS = true, RATES = false;

struct CatalogueTest : TempDirTest {
    void SetUp() override {
        writeFile(CARD_LIST_PATH, "Class fast\nAcme `1' & <2>\nClass bare\n\"Bolt\" \\\nZenith\n");
        writeFile(displayConfigPath("bare"), "# no word of it\nDriver two\n");
        writeFile(displayConfigPath("fast"), sampleFile("DisplayConfig.catalogue"));
    }
    // The date of a page becomes DATE.
    static std::string build(const CatalogueFormatter &formatter, std::size_t columns, bool marks,
                             int groupSize = CATALOGUE_GROUP_SIZE) {
        static const std::regex date("[A-Z][a-z]{2} [A-Z][a-z]{2} .\\d \\d\\d:\\d\\d:\\d\\d "
                                     "\\d{4}\n</i>");
        cardList = nullptr;
        testing::internal::CaptureStdout();
        const std::string text = textOf(
            [&](std::FILE *out) { buildCatalogue(out, formatter, groupSize, columns, marks); });
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "3 supported cards\n");
        return std::regex_replace(text, date, "DATE</i>");
    }
};

// Modes of sizes and depths that fit a column, stand between two or are beyond all; groups, each
// opened with its first card.
TEST_F(CatalogueTest, TablesAreWrittenAsTheirFormatsWant) {
    EXPECT_EQ(build(htmlFormatter, CATALOGUE_COLUMNS, RATES), sampleFile("catalogue.html"));
    EXPECT_EQ(build(htmlFormatter, 2, MARKS, 2), sampleFile("catalogue.groups.html"));
    EXPECT_EQ(build(mifFormatter, 5, MARKS), sampleFile("catalogue.mif"));
    EXPECT_EQ(build(mifFormatter, 1, RATES, 1), sampleFile("catalogue.groups.mif"));
}

// The chipset text ends where its piece of 99 bytes does.
TEST_F(CatalogueTest, TheChipsetIsReadInPieces) {
    const std::string filler(89, '.');
    const std::pair<std::string, std::string> cases[] = {{filler + "Chipset:X9 and more\n", "X9"},
                                                         {filler + "...chipset", ""},
                                                         {filler + ".... chipset X9\nCHIPSET", ""},
                                                         {"chipset", ""},
                                                         {"chip set\n", "fast"}};
    for (const auto &[text, chipset] : cases) {
        writeFile(displayConfigPath("fast"), text);
        EXPECT_NE(build(htmlFormatter, 1, MARKS).find("&gt;</TD>\n\t\t<TD NOWRAP>" + chipset + "<"),
                  std::string::npos)
            << text;
    }
}

static const std::string LONG_HEAD = std::string(600, '<') + std::string("\0\xff\n", 3);
static const std::string REST = " > # end of <Tbl>\n" + LONG_HEAD + "no line end";

TEST_F(CatalogueTest, OnlyTheTableBodyOfADocumentIsReplaced) {
    const std::string body = build(mifFormatter, CATALOGUE_COLUMNS, MARKS);
    const std::string old = " <TblBody > > # not counted\n  <Row\n   <Cell >\n  >\n > # end <\n";
    const std::string apart = std::string(247, ' ') + "<TblBody\n"; // not within one piece
    const std::pair<std::string, std::string> cases[] = {
        {LONG_HEAD + old + REST, LONG_HEAD + body + REST},
        {LONG_HEAD, LONG_HEAD + body},
        {"no line end", "no line end\n" + body},
        {apart + old + "<", apart + body + "<"},
        {LONG_HEAD + "<TblBody <never closed\n", LONG_HEAD + body}};
    for (const auto &[document, updated] : cases) {
        writeFile("document", document);
        for (int run = 0; run < 2; run++) { // the second finds what the first wrote
            cardList = nullptr;
            updateMifCatalogue("document", MARKS);
        }
        EXPECT_EQ(readFile("document"), updated);
    }
    cardList = nullptr;
    writeFile(CARD_LIST_PATH, "");
    updateMifCatalogue("document", MARKS);
    EXPECT_EQ(readFile("document"), LONG_HEAD + "  > # end of Row\n > # end of TblBody\n");
}

TEST_F(CatalogueTest, WhatCannotBeReadOrWrittenWholeLeavesTheDocument) {
    const auto failed = testing::ExitedWithCode(1);
    writeFile("document", LONG_HEAD);
    const auto updateOnFullDisk = [] {
        const rlimit limit{4096, 4096}; // bytes of a file
        setrlimit(RLIMIT_FSIZE, &limit);
        std::signal(SIGXFSZ, SIG_IGN);
        updateMifCatalogue("document", MARKS);
    };
    EXPECT_EXIT(updateOnFullDisk(), failed, "^cannot write file document: File too large\n$");
    EXPECT_EXIT(writeHtmlCatalogue("/dev/full", MARKS), failed,
                "^cannot write file /dev/full: No space left on device\n$");
    EXPECT_EQ(readFile("document"), LONG_HEAD);
    std::filesystem::create_symlink("/proc/self/mem", "unreadable"); // its first byte is
    EXPECT_EXIT(updateMifCatalogue("unreadable", MARKS), failed,
                "^cannot write file unreadable: Input/output error\n$");
    EXPECT_TRUE(std::filesystem::is_symlink("unreadable"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."), {}), 3); // usr and the two
}
