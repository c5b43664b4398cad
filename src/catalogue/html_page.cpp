#include "catalogue/html_page.h"

#include <array>
#include <ctime>
#include <string>
#include <utility>

#include "base/file.h"
#include "base/messages.h"
#include "catalogue/cell_text.h"

static constexpr auto HTML_ESCAPES =
    std::to_array<Escape>({{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}});
static constexpr auto HTML_LINE_BREAKS = std::to_array<Escape>({{' ', "<BR>"}});

// The head ends by opening a row; each card opens its own.
static constexpr std::string_view HTML_HEAD =
    "<HTML>\n<HEAD>\n<TITLE>Korvel-X Supported Graphics Cards</TITLE>\n</HEAD>\n<BODY>\n"
    "<H1 ALIGN=CENTER>Korvel-X n.n.n Supported Graphics Cards</H1>\n"
    "<TABLE BORDER CELLPADDING=5>\n"
    "\t<TR>\n"
    "\t\t<TH ROWSPAN=3>Model Name<br>and Number</TH>\n"
    "\t\t<TH ROWSPAN=3>Chipset</TH>\n"
    "\t\t<TH COLSPAN=24>Resolutions and Colors Supported</TH>\n"
    "\t</TR>\n"
    "\t<TR>\n"
    "\t\t<TH COLSPAN=4>640x480</TH>\n"
    "\t\t<TH COLSPAN=4>800x600</TH>\n"
    "\t\t<TH COLSPAN=4>1024x768</TH>\n"
    "\t\t<TH COLSPAN=4>1152x864</TH>\n"
    "\t\t<TH COLSPAN=4>1280x1024</TH>\n"
    "\t\t<TH COLSPAN=4>1600x1200</TH>\n"
    "\t</TR>\n"
    "\t<TR>\n";
static constexpr int HTML_RESOLUTIONS = 6;
static constexpr std::string_view HTML_DEPTHS =
    "\t\t<TH>16</TH>\n\t\t<TH>256</TH>\n\t\t<TH>32K</TH>\n\t\t<TH>16.7M</TH>\n";
static constexpr std::string_view HTML_HEAD_END = "\t</TR>\n\t<TR>\n";

static constexpr std::string_view HTML_TABLE_END = "\t</TR>\n</TABLE>\n<P>\n";
static constexpr std::string_view HTML_FOOT =
    "<P>\n<a href=\"../Korvel.html\"><img align=middle src=\"../images/dunmere.small.gif\">\n"
    "Home Page\n</BODY>\n</HTML>\n";

static void beginPage(std::FILE *out) {
    writeText(out, HTML_HEAD);
    for (int resolution = 0; resolution < HTML_RESOLUTIONS; resolution++)
        writeText(out, HTML_DEPTHS);
    writeText(out, HTML_HEAD_END);
}

static void endPage(std::FILE *out) {
    const std::time_t now = std::time(nullptr);
    writeText(out, HTML_TABLE_END);
    std::fprintf(out, "<i>This table was generated on %s</i>\n", std::ctime(&now));
    writeText(out, HTML_FOOT);
}

static void writeTextCell(std::FILE *out, std::string_view text) {
    std::string cell = "\t\t<TD NOWRAP>";
    appendEscaped(cell, text, HTML_ESCAPES);
    writeText(out, cell += "</TD>\n");
}

static void writeCardRow(std::FILE *out, int indexInGroup, const CardEntry &card) {
    writeText(out, indexInGroup != 0 ? "\t</TR>\n\t<TR>\n" : "\t<TR>\n");
    writeTextCell(out, card.name);
    writeTextCell(out, chipsetOf(card.cardClass));
}

static void writeColumnCell(std::FILE *out, std::string_view cellText, std::size_t, bool marks) {
    if (marks) {
        writeText(out, cellText.empty()
                           ? "\t\t<TD><BR></TD>\n"
                           : "\t\t<TD ALIGN=CENTER><IMG SRC=\"../images/check.xbm\"></TD>\n");
        return;
    }
    std::string cell = "\t\t<TD>";
    appendEscaped(cell, cellText, HTML_LINE_BREAKS);
    writeText(out, cell += "<BR></TD>\n");
}

const CatalogueFormatter htmlFormatter = {beginPage, endPage, writeCardRow, writeColumnCell};

void writeHtmlCatalogue(const char *path, bool marks) {
    File page(std::fopen(path, "we"));
    if (!page)
        systemError("cannot open file %s", path);
    buildCatalogue(page.get(), htmlFormatter, CATALOGUE_GROUP_SIZE, CATALOGUE_COLUMNS, marks);
    if (!closeWritten(std::move(page)))
        systemError("cannot write file %s", path);
}
