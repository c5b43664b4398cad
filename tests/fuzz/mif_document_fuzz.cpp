// Documents whose table body is replaced, twice: all else in them stays.
#include "base/paths.h"
#include "catalogue/mif_document.h"
#include "fuzz/fuzz.h"
#include "hwdb/display_entry.h"

// The catalogue of one card, whose name would end the table if it were written as it is.
static std::string makeCatalogue() {
    writeFile(CARD_LIST_PATH, "Class fast\nAcme <1> '>>>>'\n");
    writeFile(displayConfigPath("fast"), "# chipset <'\nModes\n640 480 4 60 25 vga\n");
    const std::string body = textOf([](std::FILE *out) {
        buildCatalogue(out, mifFormatter, CATALOGUE_GROUP_SIZE, CATALOGUE_COLUMNS, true);
    });
    forgetCards();
    return body;
}

static std::string update(std::string_view document) {
    writeFile("document", document);
    const MemoryBound bound(document.size());
    updateMifCatalogue("document", true);
    bound.check();
    forgetCards();
    return readFile("document");
}

void checkInput(std::string_view input) {
    static const std::string body = makeCatalogue();
    const std::string updated = update(input);
    const auto from = updated.find(body);
    require(from != updated.npos, "the document has the catalogue");
    const std::string_view head = std::string_view(updated).substr(0, from);
    const std::string_view rest = std::string_view(updated).substr(from + body.size());
    require(input.starts_with(head) || head == std::string(input) + "\n",
            "the lines before the table body are kept");
    require(input.ends_with(rest), "the lines behind the table body are kept");
    require(input.find("<TblBody") != input.npos || input.size() <= head.size(),
            "nothing is lost of a document without a table body");
    require(update(updated) == updated, "the next update finds the same table body");
}
