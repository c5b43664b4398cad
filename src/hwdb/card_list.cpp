#include "hwdb/card_list.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/lasting_memory.h"
#include "base/line_reader.h"
#include "base/lists.h"
#include "base/messages.h"
#include "base/paths.h"
#include "base/text_scanner.h"
#include "hwdb/extra_lines.h"

static constexpr std::size_t CARD_PIECE_MAX = 1022;    // bytes of a line read at once
static constexpr std::size_t CARD_SHORT_LINE = 5;      // no card is that short, line end included
static constexpr std::size_t CARD_CLASS_TEXT_FROM = 6; // behind "Class" and one separator
static constexpr std::string_view CARD_CLASS = "Class";

CardEntry *cardList = nullptr;

struct CardReader {
    std::optional<std::string_view> cardClass; // class in force; none before the first
    std::optional<std::string_view> pending;   // name of a card whose extra lines may still follow
};

// Puts the pending card, if any, at the head of cardList, with the class in force and the extra
// lines collected so far. From the head on the list is then in reverse file order, the order that
// cards of equal name keep.
static void finishCard(CardReader &reader) {
    if (!reader.pending)
        return;
    if (reader.cardClass)
        cardList = keepRecord(
            CardEntry{cardList, *reader.pending, *reader.cardClass, keepText(takeExtraLines()), 0});
    else
        showMessage("Card %s has no class: ignored\n", std::string(*reader.pending).c_str());
    reader.pending.reset();
    clearExtraLines();
}

static void readCardLine(CardReader &reader, std::string_view line) {
    if (line.starts_with(CARD_CLASS)) {
        finishCard(reader);
        const auto text = line.substr(std::min(CARD_CLASS_TEXT_FROM, line.size()));
        reader.cardClass = keepText(chopNewline(text));
    } else if (!collectExtraLine(line) && !line.starts_with('#') && line.size() > CARD_SHORT_LINE) {
        finishCard(reader);
        reader.pending = keepText(chopNewline(line.substr(0, line.find(','))));
    }
}

// Sorts the cards by name, byte by byte; cards of equal name keep their order. Each stands beside
// its name: to reach the name through the record would be a wait for memory in every comparison.
static void sortListByName(CardEntry *&head) {
    std::vector<std::pair<std::string_view, CardEntry *>> cards;
    cards.reserve(static_cast<std::size_t>(listCount(head)));
    for (CardEntry *card = head; card; card = card->next)
        cards.emplace_back(card->name, card);
    std::ranges::stable_sort(cards, {}, &decltype(cards)::value_type::first);
    ListBuilder<CardEntry> sorted;
    for (const auto &[name, card] : cards)
        appendRecord(sorted, card);
    head = sorted.head;
}

void loadCardList() {
    auto lines = openLines(CARD_LIST_PATH, CARD_PIECE_MAX);
    if (!lines)
        fatalError("Can't Open Card List %s\n", CARD_LIST_PATH);
    CardReader reader;
    std::string_view line;
    while (readLine(*lines, line))
        readCardLine(reader, line);
    finishCard(reader);
    clearExtraLines();
    sortListByName(cardList);
}
