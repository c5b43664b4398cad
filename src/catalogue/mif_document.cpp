#include "catalogue/mif_document.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>
#include <utility>
#include <vector>

#include "base/file.h"
#include "base/line_reader.h"
#include "base/messages.h"
#include "base/replace_file.h"
#include "catalogue/cell_text.h"

static constexpr std::size_t MIF_PIECE_MAX = 254;     // bytes of a line read at once
static constexpr std::size_t MIF_BUFFER_SIZE = 65536; // bytes; few large writes are faster
static constexpr std::size_t MIF_CELL_USUAL = 384;    // bytes of a cell with a short text
static constexpr std::string_view MIF_TABLE_BODY = "<TblBody";
static constexpr std::string_view MIF_ROW_END = "  > # end of Row\n";

// Whoever replaces the table body counts every bracket, so none may stand in a string.
static constexpr auto MIF_ESCAPES = std::to_array<Escape>(
    {{'\\', "\\\\"}, {'\'', "\\q"}, {'`', "\\Q"}, {'<', "\\x3c "}, {'>', "\\x3e "}});

// Borders of the cells: those of a text cell, and those of a matrix cell by its place in the four
// columns of its resolution, where the first column of the table has its own.
static constexpr std::string_view MIF_TEXT_RULING = "    <CellLRuling `Thin'>\n"
                                                    "    <CellBRuling `Medium'>\n"
                                                    "    <CellRRuling `Thin'>\n";
static constexpr std::string_view MIF_FIRST_RULING = "   <CellBRuling `Medium'>\n"
                                                     "   <CellRRuling `Medium'>\n";
static constexpr std::string_view MIF_MIDDLE_RULING = "   <CellLRuling `Medium'>\n"
                                                      "   <CellBRuling `Medium'>\n"
                                                      "   <CellRRuling `Medium'>\n";
static constexpr std::string_view MIF_LAST_RULING = "   <CellBRuling `Medium'>\n"
                                                    "   <CellRRuling `Thin'>\n";
static constexpr std::string_view MIF_LATER_RULING = "   <CellLRuling `Thin'>\n"
                                                     "   <CellBRuling `Medium'>\n"
                                                     "   <CellRRuling `Medium'>\n";
static constexpr std::array<std::string_view, CATALOGUE_DEPTHS> MIF_RULINGS = {
    MIF_LATER_RULING, MIF_MIDDLE_RULING, MIF_MIDDLE_RULING, MIF_LAST_RULING};

static constexpr std::string_view MIF_CHECK_MARK = "3"; // in the font of the mark's paragraphs

static void beginBody(std::FILE *out) { writeText(out, " <TblBody \n"); }

static void endBody(std::FILE *out) {
    writeText(out, MIF_ROW_END);
    writeText(out, " > # end of TblBody\n");
}

// A cell of one paragraph with the paragraph format `tag`, written at once: there are many.
static void writeCell(std::FILE *out, std::string_view ruling, std::string_view tag,
                      std::string_view text) {
    std::string cell;
    cell.reserve(MIF_CELL_USUAL);
    cell.append("   <Cell \n").append(ruling);
    cell.append("    <CellContent \n"
                "     <Para \n"
                "      <PgfTag `");
    cell.append(tag).append("'>\n"
                            "      <ParaLine \n"
                            "       <String `");
    appendEscaped(cell, text, MIF_ESCAPES);
    cell.append("'>\n"
                "      >\n"
                "     > # end of Para\n"
                "    > # end of CellContent\n"
                "   > # end of Cell\n");
    writeText(out, cell);
}

static void writeCardRow(std::FILE *out, int indexInGroup, const CardEntry &card) {
    if (indexInGroup != 0)
        writeText(out, MIF_ROW_END);
    writeText(out, "  <Row \n");
    writeCell(out, MIF_TEXT_RULING, "CellCard", card.name);
    writeCell(out, MIF_TEXT_RULING, "CellChip", chipsetOf(card.cardClass));
}

static void writeColumnCell(std::FILE *out, std::string_view cellText, std::size_t column,
                            bool marks) {
    const auto ruling = column == 0 ? MIF_FIRST_RULING : MIF_RULINGS[column % CATALOGUE_DEPTHS];
    if (marks)
        writeCell(out, ruling, "ZapfCellBody", cellText.empty() ? "" : MIF_CHECK_MARK);
    else
        writeCell(out, ruling, "CellBody", cellText);
}

// Copies what stands before the old body; the piece that opens the body is left out. Without one
// the new body begins a line of its own: that line is what the next update takes away.
static void copyHead(LineReader &document, std::FILE *out) {
    bool lineEnded = true;
    std::string_view piece;
    while (tryReadPiece(document, piece)) {
        if (piece.find(MIF_TABLE_BODY) != piece.npos)
            return;
        writeText(out, piece);
        lineEnded = piece.ends_with('\n');
    }
    if (!lineEnded)
        writeText(out, "\n");
}

// Passes over the old body, whose opening bracket was read: to the bracket that closes it and on
// to the end of that line.
static void skipTableBody(LineReader &document) {
    long depth = 1; // brackets that are open
    std::string_view text;
    while (depth > 0 && tryReadBlock(document, text)) {
        std::size_t index = 0;
        while (index < text.size() && depth > 0) {
            const std::size_t last = std::min(text.find('>', index), text.size() - 1);
            const auto part = text.substr(index, last + 1 - index);
            depth += std::ranges::count(part, '<') - part.ends_with('>');
            index += part.size();
        }
        returnBytes(document, text.size() - index);
    }
    while (tryReadPiece(document, text) && !text.ends_with('\n'))
        continue;
}

static void copyRest(LineReader &document, std::FILE *out) {
    std::string_view text;
    while (tryReadBlock(document, text))
        writeText(out, text);
}

// Puts the new document in place or removes it; tells what stands then.
static Replaced installDocument(const LineReader &document, File out, const FilePlace &newPlace,
                                const FilePlace &place) {
    if (document.error == 0)
        return replaceFile(std::move(out), newPlace, place, document.file.get());
    errno = document.error;
    removeFile(newPlace);
    return Replaced::No;
}

const CatalogueFormatter mifFormatter = {beginBody, endBody, writeCardRow, writeColumnCell};

void updateMifCatalogue(const char *path, bool marks) {
    const auto place = openPlace(path);
    auto document = place ? openLines(*place, MIF_PIECE_MAX) : std::nullopt;
    if (!document)
        systemError("cannot open file %s", path);
    const FilePlace newPlace = besidePlace(*place, "." + std::to_string(getpid()));
    std::vector<char> buffer(MIF_BUFFER_SIZE); // outlives the stream
    File out = createNewFile(newPlace);
    if (!out)
        systemError("cannot open tmp file %s", path);
    std::setvbuf(out.get(), buffer.data(), _IOFBF, buffer.size());
    copyHead(*document, out.get());
    buildCatalogue(out.get(), mifFormatter, CATALOGUE_GROUP_SIZE, CATALOGUE_COLUMNS, marks);
    skipTableBody(*document);
    copyRest(*document, out.get());
    const Replaced replaced = installDocument(*document, std::move(out), newPlace, *place);
    if (replaced == Replaced::No)
        systemError("cannot write file %s", path);
    if (replaced == Replaced::Unsynced)
        systemError("new file %s is in place, but not synced to disk", path);
}
