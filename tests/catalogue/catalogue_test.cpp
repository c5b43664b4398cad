#include "catalogue/catalogue.h"

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
        File out(std::fopen("built", "w"));
        buildCatalogue(out.get(), formatter, groupSize, columns, marks);
        out.reset();
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "3 supported cards\n");
        return std::regex_replace(readFile("built"), date, "DATE</i>");
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

// Whatever stands before the table body and behind it stays; the second update finds the first.
TEST_F(CatalogueTest, OnlyTheTableBodyOfADocumentIsReplaced) {
    const std::string body = build(mifFormatter, CATALOGUE_COLUMNS, MARKS),
                      head = std::string(600, '<') + std::string("\0\xff\n", 3),
                      rest = " > # end of <Tbl>\n" + head + "no line end",
                      old = " <TblBody > > # not counted\n  <Row\n   <Cell >\n  >\n > # end <\n",
                      apart = std::string(247, ' ') + "<TblBody\n"; // not within one piece
    const std::pair<std::string, std::string> cases[] = {
        {head + old + rest, head + body + rest},
        {"no line end", "no line end\n" + body},
        {apart + old + "<", apart + body + "<"},
        {head + "<TblBody <never closed\n", head + body},
        {head, head + body}};
    for (const auto &[document, updated] : cases) {
        writeFile("document", document);
        for (int run = 0; run < 2; run++) {
            cardList = nullptr;
            updateMifCatalogue("document", MARKS);
        }
        EXPECT_EQ(readFile("document"), updated);
    }
    cardList = nullptr;
    writeFile(CARD_LIST_PATH, "");
    updateMifCatalogue("document", MARKS);
    EXPECT_EQ(readFile("document"), head + "  > # end of Row\n > # end of TblBody\n");
}

TEST_F(CatalogueTest, WhatCannotBeReadOrWrittenWholeLeavesTheDocument) {
    const auto failed = testing::ExitedWithCode(1);
    EXPECT_EXIT(writeHtmlCatalogue("/dev/full", MARKS), failed,
                "^cannot write file /dev/full: No space left on device\n$");
    std::filesystem::create_symlink("/proc/self/mem", "unreadable"); // byte 0 fails
    EXPECT_EXIT(updateMifCatalogue("unreadable", MARKS), failed,
                "^cannot write file unreadable: Input/output error\n$");
    EXPECT_TRUE(std::filesystem::is_symlink("unreadable"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."), {}), 2); // and usr
}
