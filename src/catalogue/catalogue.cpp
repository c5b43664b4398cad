#include "catalogue/catalogue.h"

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <utility>

#include "base/lists.h"
#include "hwdb/display_entry.h"

static constexpr int CATALOGUE_UNPACKED_DEPTH = 32; // bits per pixel, 24 of them for colour
static constexpr int CATALOGUE_COLOR_DEPTH = 24;    // bits per pixel

struct CatalogueColumn {
    int width; // pixels
    int depth; // bits per pixel
};

static constexpr std::array<CatalogueColumn, CATALOGUE_COLUMNS> CATALOGUE_TABLE = {{
    {640, 4},  {640, 8},  {640, 16},  {640, 24},  //
    {800, 4},  {800, 8},  {800, 16},  {800, 24},  //
    {1024, 4}, {1024, 8}, {1024, 16}, {1024, 24}, //
    {1152, 4}, {1152, 8}, {1152, 16}, {1152, 24}, //
    {1280, 4}, {1280, 8}, {1280, 16}, {1280, 24}, //
    {1600, 4}, {1600, 8}, {1600, 16}, {1600, 24},
}};

struct CatalogueRun {
    std::FILE *out;
    const CatalogueFormatter &formatter;
    int groupSize;
    std::span<const CatalogueColumn> columns;
    bool marks;
    std::array<std::string, CATALOGUE_COLUMNS> cells = {}; // of the card, one for each column
    int cards = 0;
    int indexInGroup = -1;
    bool groupStarted = false;
};

// True when the mode is neither smaller or shallower than the first column nor larger or deeper
// than the last.
static bool isWithinColumns(const VideoMode &mode, std::span<const CatalogueColumn> columns) {
    const CatalogueColumn &first = columns.front(), &last = columns.back();
    return mode.hDisplay >= first.width && mode.hDisplay <= last.width &&
           mode.depth >= first.depth && mode.depth <= last.depth;
}

// A mode of a width between two columns fits the first column of the larger width.
static bool fitsColumn(const VideoMode &mode, const CatalogueColumn &column) {
    return column.width > mode.hDisplay ||
           (column.width == mode.hDisplay && column.depth >= mode.depth);
}

// A rate that is known by a code only counts as fixed; no blank stands before that.
static void appendRefresh(std::string &cellText, const VideoMode &mode) {
    if (mode.refresh <= 0) {
        cellText += "fxd";
        return;
    }
    if (!cellText.empty())
        cellText += ' ';
    cellText += std::to_string(mode.refresh);
    if (mode.flags & MODE_INTERLACE)
        cellText += 'i';
}

static void enterMode(CatalogueRun &run, const CardEntry &card, VideoMode &mode) {
    if (mode.depth == CATALOGUE_UNPACKED_DEPTH)
        mode.depth = CATALOGUE_COLOR_DEPTH;
    if (!isWithinColumns(mode, run.columns))
        return;
    const auto column = std::ranges::find_if(
        run.columns, [&](const CatalogueColumn &entry) { return fitsColumn(mode, entry); });
    if (column == run.columns.end()) // never, while the last column is the largest and deepest
        std::printf("somebody doesn't fit in a column\n%s\n%s\n", std::string(card.name).c_str(),
                    mode.label.c_str());
    else
        appendRefresh(run.cells[static_cast<std::size_t>(column - run.columns.begin())], mode);
}

// Enters the card's modes by width and depth, those of equal ones in file order.
static void enterModes(CatalogueRun &run, CardEntry &card) {
    const ModeList modes = readDisplayEntry(card);
    auto sorted = listRecords(modes.get());
    std::ranges::stable_sort(
        sorted, {}, [](const VideoMode *mode) { return std::pair(mode->hDisplay, mode->depth); });
    for (VideoMode *mode : sorted)
        enterMode(run, card, *mode);
}

static void startRow(CatalogueRun &run) {
    run.indexInGroup = (run.indexInGroup + 1) % run.groupSize;
    if (run.indexInGroup != 0)
        return;
    if (run.groupStarted)
        run.formatter.endGroup(run.out);
    run.groupStarted = true;
    run.formatter.beginGroup(run.out);
}

static void writeCard(CatalogueRun &run, CardEntry &card) {
    startRow(run);
    run.formatter.cardRow(run.out, run.indexInGroup, card);
    for (std::string &cell : run.cells)
        cell.clear();
    run.cards++;
    enterModes(run, card);
    for (std::size_t index = 0; index < run.columns.size(); index++)
        run.formatter.columnCell(run.out, run.cells[index], index, run.marks);
}

void buildCatalogue(std::FILE *out, const CatalogueFormatter &formatter, int groupSize,
                    std::size_t columnCount, bool marks) {
    CatalogueRun run{out, formatter, groupSize, std::span(CATALOGUE_TABLE).first(columnCount),
                     marks};
    loadCardList();
    for (CardEntry *card = cardList; card; card = card->next)
        writeCard(run, *card);
    formatter.endGroup(out);
    std::printf("%d supported cards\n", run.cards);
}
