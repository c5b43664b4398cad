// The catalogue page in a browser.
#include <regex>

#include "support/terminal.h"

static constexpr const char *DUMP_PAGE =
    "HOME=\"$PWD\" chromium --headless --no-sandbox --disable-gpu --user-data-dir=\"$PWD/browser\" "
    "--dump-dom \"file://$PWD/root/tmp/page.html\" >dom 2>browser.log";

// What the browser makes of the page, told at its end.
static constexpr const char *TELL_IMAGES =
    "<script>onload = () => document.body.append("
    "[...document.images].filter(image => image.naturalWidth > 0).length + ' images, ' +"
    "[...document.querySelectorAll('td')].filter(cell => !cell.innerText.trim() &&"
    " !cell.querySelector('img')).length + ' empty cells')</script>";

using PageTest = TerminalTest;

static std::ptrdiff_t countOf(const std::string &text, const std::string &pattern) {
    const std::regex regex(pattern);
    return std::distance(std::sregex_iterator(text.begin(), text.end(), regex), {});
}

TEST_F(PageTest, ABrowserShowsARowPerCardWithItsMarks) {
    if (std::system("command -v chromium >/dev/null") != 0)
        GTEST_SKIP() << "chromium is not installed";
    const RunResult page = runProgram({"-lh", "/tmp/page.html"});
    ASSERT_EQ(page.errors, "");
    std::filesystem::copy(SCRCONF_SOURCE_DIR "/data/images",
                          root / "images"); // beside the page's folder
    writeFile(root / "tmp/page.html", readFile(root / "tmp/page.html") + TELL_IMAGES);
    ASSERT_EQ(std::system(DUMP_PAGE), 0) << readFile("browser.log");
    const std::string dom = readFile("dom");
    const auto cards = countOf(runProgram({"-lt"}).output, "\n");
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
