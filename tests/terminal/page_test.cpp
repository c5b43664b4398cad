// The catalogue page in a browser.
#include <cstdlib>

#include "support/terminal.h"

static constexpr const char *DUMP_PAGE =
    "HOME=\"$PWD\" chromium --headless --no-sandbox --disable-gpu --user-data-dir=\"$PWD/browser\" "
    "--dump-dom \"file://$PWD/root/tmp/page.html\" 2>browser.log";

// What the browser makes of the page, told at its end.
static constexpr const char *TELL = R"(<script>onload = () => {
    const all = query => [...document.querySelectorAll(query)];
    const rows = all('tr').filter(row => row.querySelectorAll('td').length === 26);
    const empty = all('td').filter(cell => !cell.innerText.trim() && !cell.querySelector('img'));
    document.body.append(`${all('table').length} table, ${all('th[colspan="4"]').length} widths, `,
        `${all('th').length} heads, ${rows.length} rows, ${all('td').length} cells, `,
        `${empty.length} empty, ${all('img').filter(image => image.naturalWidth > 0).length} images`);
};</script>)";

using PageTest = TerminalTest;

TEST_F(PageTest, ABrowserShowsARowPerCardWithItsMarks) {
    if (std::system("command -v chromium >/dev/null") != 0)
        GTEST_SKIP() << "chromium is not installed";
    const int cards = std::stoi(runProgram({"-lh", "/tmp/page.html"}).output);
    const int marks = std::stoi(outputOf("grep -o check.xbm root/tmp/page.html | wc -l"));
    EXPECT_GT(marks, cards);
    std::filesystem::copy(SCRCONF_SOURCE_DIR "/data/images", root / "images");
    writeFile(root / "tmp/page.html", readFile(root / "tmp/page.html") + TELL);
    const std::string dom = outputOf(DUMP_PAGE);
    const std::string told = "1 table, 6 widths, 33 heads, " + std::to_string(cards) + " rows, " +
                             std::to_string(26 * cards) + " cells, " +
                             std::to_string(24 * cards - marks) + " empty, " +
                             std::to_string(marks + 1) + " images"; // and the logo
    EXPECT_NE(dom.find(told), dom.npos) << readFile("browser.log") << dom;
}
