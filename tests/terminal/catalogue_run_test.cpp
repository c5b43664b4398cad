// The catalogue commands of the real program: the files that they leave, and the page in a browser.
#include <map>
#include <regex>

#include "support/terminal.h"

namespace fs = std::filesystem;

static constexpr const char *DUMP_PAGE =
    "HOME=\"$PWD\" chromium --headless --no-sandbox --disable-gpu --user-data-dir=\"$PWD/browser\" "
    "--dump-dom \"file://$PWD/root/tmp/page.html\" >dom 2>browser.log";

// What the browser makes of the page, told at its end.
static constexpr const char *TELL_IMAGES =
    "<script>onload = () => document.body.append("
    "[...document.images].filter(image => image.naturalWidth > 0).length + ' images, ' +"
    "[...document.querySelectorAll('td')].filter(cell => !cell.innerText.trim() &&"
    " !cell.querySelector('img')).length + ' empty cells')</script>";

using CatalogueRunTest = TerminalTest;

static std::ptrdiff_t countOf(const std::string &text, const std::string &pattern) {
    const std::regex regex(pattern);
    return std::distance(std::sregex_iterator(text.begin(), text.end(), regex), {});
}

TEST_F(CatalogueRunTest, ABrowserShowsARowPerCardWithItsMarks) {
    if (std::system("command -v chromium >/dev/null") != 0)
        GTEST_SKIP() << "chromium is not installed";
    const RunResult page = run({"-lh", "/tmp/page.html"});
    ASSERT_EQ(page.errors, "");
    fs::copy(SCRCONF_SOURCE_DIR "/data/images", root / "images"); // beside the page's folder
    writeFile(root / "tmp/page.html", readFile(root / "tmp/page.html") + TELL_IMAGES);
    ASSERT_EQ(std::system(DUMP_PAGE), 0) << readFile("browser.log");
    const std::string dom = readFile("dom");
    const auto cards = countOf(run({"-lt"}).output, "\n");
    EXPECT_EQ(page.output, std::to_string(cards) + " supported cards\n");
    EXPECT_EQ(countOf(dom, "<table "), 1);
    EXPECT_EQ(countOf(dom, "<th colspan=\"4\">\\d+x\\d+</th>"), 6);
    EXPECT_EQ(countOf(dom, "<th>(16|256|32K|16.7M)</th>"), 24);
    EXPECT_EQ(countOf(dom, "<tr>\\s*<td nowrap=\"\">[^<]+</td>\\s*<td nowrap=\"\">[^<]+</td>"
                           "(\\s*<td( align=\"CENTER\")?><(br|img [^>]*)></td>){24}\\s*</tr>"),
              cards);
    EXPECT_EQ(countOf(dom, "<td[ >]"), 26 * cards);
    const auto marks = countOf(dom, "check\\.xbm");
    EXPECT_GT(marks, cards);
    EXPECT_NE(dom.find(std::to_string(marks + 1) + " images, " + // and the logo
                       std::to_string(24 * cards - marks) + " empty cells"),
              std::string::npos)
        << dom.substr(dom.size() - 200);
}

TEST_F(CatalogueRunTest, AFatalErrorLeavesTheDocumentAndTheUnfinishedFile) {
    writeFile(korvel / "scrconf/CardInfo", "Class bare\nArdent\nClass absent\nZenith\n");
    writeFile(korvel / "DisplayConfig/bare/config", "Driver bare\n");
    writeFile(root / "tmp/document", "head\n <TblBody >\n");
    const std::string entry = "/usr/lib/X11/Korvel/DisplayConfig/absent/config\n";
    const RunResult result = run({"-l", "/tmp/document"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "Cannot Open " + entry +
                                 "\nFatal error:\nCan't open DisplayConfig entry " + entry + "\n");
    std::map<std::string, std::string> texts; // by name, without the process id
    for (const fs::path &file : fs::directory_iterator(root / "tmp"))
        texts[std::regex_replace(file.filename().string(), std::regex("[0-9]+$"), "PID")] =
            readFile(file);
    ASSERT_EQ(texts.size(), 2u);
    EXPECT_EQ(texts["document"], "head\n <TblBody >\n");
    const std::string unfinished = texts["document.PID"];
    EXPECT_TRUE(unfinished.starts_with("head\n <TblBody \n  <Row \n") &&
                unfinished.ends_with("'>\n      >\n     > # end of Para\n"
                                     "    > # end of CellContent\n   > # end of Cell\n"))
        << unfinished;
}

TEST_F(CatalogueRunTest, FilesThatCannotBeOpenedAreReported) {
    const auto errorOf = [&](const char *option, const char *path) {
        const RunResult result = run({option, path});
        EXPECT_EQ(result.status, 1);
        return result.errors;
    };
    EXPECT_EQ(errorOf("-l", "/tmp/x"), "cannot open file /tmp/x: No such file or directory\n");
    EXPECT_EQ(errorOf("-l", "/tmp"), "cannot open file /tmp: Is a directory\n");
    EXPECT_EQ(errorOf("-lh", "/x/y"), "cannot open file /x/y: No such file or directory\n");
    const std::string longName = "/tmp/" + std::string(252, 'd'); // no room for a process id
    writeFile(root / longName.substr(1), "head\n");
    EXPECT_EQ(errorOf("-l", longName.c_str()),
              "cannot open tmp file " + longName + ": File name too long\n");
}
