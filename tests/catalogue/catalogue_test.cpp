#include "catalogue/catalogue.h"

#include <sys/resource.h>

#include <csignal>
#include <regex>

#include "base/file.h"
#include "base/lists.h"
#include "base/paths.h"
#include "catalogue/html_page.h"
#include "catalogue/mif_document.h"
#include "hwdb/display_entry.h"
#include "support/temp_dir.h"

static constexpr bool MARKS = true, RATES = false;

// Shows what the builder asks for: groups in brackets, and each card's name and filled cells.
static const CatalogueFormatter listingFormatter = {
    [](std::FILE *out) { writeText(out, "["); }, [](std::FILE *out) { writeText(out, "\n]"); },
    [](std::FILE *out, int index, const CardEntry &card) {
        std::fprintf(out, "\n%d ", index);
        writeText(out, card.name);
    },
    [](std::FILE *out, std::string_view text, std::size_t column, bool marks) {
        if (!text.empty())
            std::fprintf(out, " %zu=%s%s", column, std::string(text).c_str(), marks ? "!" : "");
    }};

struct CatalogueTest : TempDirTest {
    void SetUp() override {
        cardList = nullptr;
        writeFile(CARD_LIST_PATH, "Class fast\nAcme `1' & <2>\nClass bare\n\"Bolt\" \\\n");
        writeFile(displayConfigPath("bare"), "# no word of it\nDriver two\n");
        writeFile(displayConfigPath("fast"), "# A ChipSet <Fast> & 'Co'\n chipset later\nModes\n"
                                             "640 480 4 -1 25 vga\n"
                                             "800 600 4 60 40 svga\n");
    }
    std::string build(const CatalogueFormatter &formatter, std::size_t columns, bool marks,
                      int groupSize = CATALOGUE_GROUP_SIZE) {
        cardList = nullptr;
        testing::internal::CaptureStdout();
        const std::string text = textOf(
            [&](std::FILE *out) { buildCatalogue(out, formatter, groupSize, columns, marks); });
        EXPECT_EQ(testing::internal::GetCapturedStdout(),
                  std::to_string(listCount(cardList)) + " supported cards\n");
        return text;
    }
};

TEST_F(CatalogueTest, CellsHoldTheRatesOfTheModesThatFitThem) {
    writeFile(displayConfigPath("fast"),
              "Modes\n"
              "1600 1200 24 60 200 word\n1601 1200 8 60 200 word\n512 384 8 60 20 word\n"
              "640 480 2 60 25 word\n640 480 25 60 25 word\n"     // too shallow, too deep
              "1024 768 32 70 75 word\n1024 768 24 75 79 word\n"  // the 32-bit mode sorts last
              "1024 768 8 60 65 word\n1024 768 8 72 75 word 18\n" // interlaced
              "1024 768 8 43 45 word\n"                           // equal modes in file order
              "720 400 8 85 35 word\n800 600 4 56 36 word\n"      // between 640 and 800
              "800 600 15 56 36 word\n800 600 16 -3 36 word\n"    // behind a rate
              "640 480 4 0 25 word\n640 480 4 -1 25 word\n");
    EXPECT_EQ(build(listingFormatter, CATALOGUE_COLUMNS, RATES),
              "[\n0 \"Bolt\" \\\n1 Acme `1' & <2> 0=fxdfxd 4=85 56 6=56fxd 9=60 72i 43 11=75 70 "
              "23=60\n]");
}

TEST_F(CatalogueTest, EveryColumnHasItsModeAndTheFirstOneMany) {
    std::string modes = "Modes\n", cells;
    int column = 0;
    for (const int width : {640, 800, 1024, 1152, 1280, 1600})
        for (const int depth : {4, 8, 16, 24}) {
            modes += std::to_string(width) + " 480 " + std::to_string(depth) + " 100 25 word\n";
            cells += " " + std::to_string(column++) + "=100";
        }
    for (int rate = 101; rate < 200; rate++) {
        modes += "640 480 4 " + std::to_string(rate) + " 25 word\n";
        cells.insert(cells.find(" 1="), " " + std::to_string(rate));
    }
    writeFile(displayConfigPath("fast"), modes);
    EXPECT_EQ(build(listingFormatter, CATALOGUE_COLUMNS, RATES),
              "[\n0 \"Bolt\" \\\n1 Acme `1' & <2>" + cells + "\n]");
}

TEST_F(CatalogueTest, GroupsOpenWithTheirFirstCard) {
    EXPECT_EQ(build(listingFormatter, 1, MARKS, 1),
              "[\n0 \"Bolt\" \\\n][\n0 Acme `1' & <2> 0=fxd!\n]");
    writeFile(CARD_LIST_PATH, "Class fast\n");
    EXPECT_EQ(build(listingFormatter, 1, MARKS), "\n]");
    EXPECT_EQ(build(mifFormatter, 1, MARKS), "  > # end of Row\n > # end of TblBody\n");
}

TEST_F(CatalogueTest, TablesAreWrittenAsTheirFormatsWant) {
    EXPECT_EQ(build(mifFormatter, 5, MARKS), sampleFile("catalogue.mif"));
    EXPECT_NE(build(mifFormatter, 1, RATES)
                  .find("<PgfTag `CellBody'>\n      <ParaLine \n"
                        "       <String `fxd'>"),
              std::string::npos);
    const std::regex date("generated on [A-Z][a-z]{2} [A-Z][a-z]{2} .\\d \\d\\d:\\d\\d:\\d\\d "
                          "\\d{4}\n</i>");
    EXPECT_EQ(std::regex_replace(build(htmlFormatter, 5, MARKS), date, "generated on DATE</i>"),
              sampleFile("catalogue.html"));
    writeFile(displayConfigPath("fast"), "Modes\n640 480 4 60 25 vga\n640 480 4 72 31 vga\n");
    EXPECT_NE(build(htmlFormatter, 1, RATES).find("\t\t<TD>60<BR>72<BR></TD>\n"),
              std::string::npos);
}

// The chipset text ends where its piece of 99 bytes does.
TEST_F(CatalogueTest, TheChipsetIsReadInPieces) {
    const std::string filler(89, '.');
    const auto chipset = [&](std::string_view text) {
        writeFile(displayConfigPath("fast"), text);
        const std::string row = build(htmlFormatter, 1, MARKS);
        const auto from = row.rfind("<TD NOWRAP>") + 11;
        return row.substr(from, row.find("</TD>", from) - from);
    };
    EXPECT_EQ(chipset(filler + "Chipset:X9 and more\n"), "X9");
    EXPECT_EQ(chipset(filler + "..." + "chipset"), "");
    EXPECT_EQ(chipset(filler + ".... chipset X9\nCHIPSET"), "");
    EXPECT_EQ(chipset("chipset"), "");
    EXPECT_EQ(chipset("chip set\n"), "fast");
}

static const std::string LONG_HEAD = std::string(600, '<') + std::string("\0\xff\n", 3);
static const std::string REST = " > # end of <Tbl>\n" + LONG_HEAD + "no line end";

TEST_F(CatalogueTest, OnlyTheTableBodyOfADocumentIsReplaced) {
    const std::string body = build(mifFormatter, CATALOGUE_COLUMNS, MARKS);
    const auto update = [](const std::string &document) {
        writeFile("document", document);
        for (int run = 0; run < 2; run++) { // the second finds what the first wrote
            cardList = nullptr;
            updateMifCatalogue("document", MARKS);
        }
        return readFile("document");
    };
    const std::string old = " <TblBody > > # not counted\n  <Row\n   <Cell >\n  >\n > # end <\n";
    EXPECT_EQ(update(LONG_HEAD + old + REST), LONG_HEAD + body + REST);
    EXPECT_EQ(update(LONG_HEAD), LONG_HEAD + body);
    EXPECT_EQ(update("no line end"), "no line end\n" + body);
    EXPECT_EQ(update(std::string(247, ' ') + "<TblBody\n" + old + "<"), // not within one piece
              std::string(247, ' ') + "<TblBody\n" + body + "<");
    EXPECT_EQ(update(LONG_HEAD + "<TblBody <never closed\n"), LONG_HEAD + body);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."), {}),
              2); // usr and the document
}

TEST_F(CatalogueTest, WhatCannotBeReadOrWrittenWholeLeavesTheDocument) {
    const auto failsWith = testing::ExitedWithCode(1);
    writeFile("document", LONG_HEAD);
    const auto updateOnFullDisk = [] {
        const rlimit limit{4096, 4096}; // bytes of a file
        setrlimit(RLIMIT_FSIZE, &limit);
        std::signal(SIGXFSZ, SIG_IGN);
        updateMifCatalogue("document", MARKS);
    };
    EXPECT_EXIT(updateOnFullDisk(), failsWith, "^cannot write file document: File too large\n$");
    EXPECT_EXIT(writeHtmlCatalogue("/dev/full", MARKS), failsWith,
                "^cannot write file /dev/full: No space left on device\n$");
    EXPECT_EQ(readFile("document"), LONG_HEAD);
    std::filesystem::create_symlink("/proc/self/mem", "unreadable"); // its first byte is
    EXPECT_EXIT(updateMifCatalogue("unreadable", MARKS), failsWith,
                "^cannot write file unreadable: Input/output error\n$");
    EXPECT_TRUE(std::filesystem::is_symlink("unreadable"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."), {}), 3); // usr and the two
}
