// The card list: read, written by its rules and read again.
#include <algorithm>
#include <vector>

#include "base/paths.h"
#include "fuzz/fuzz.h"
#include "hwdb/card_list.h"

static std::vector<const CardEntry *> readCards(std::string_view text) {
    forgetCards();
    writeFile(CARD_LIST_PATH, text);
    const MemoryBound bound(text.size());
    loadCardList();
    bound.check();
    std::vector<const CardEntry *> cards;
    for (const CardEntry *card = cardList; card; card = card->next)
        cards.push_back(card);
    return cards;
}

// The last line of a class comes first in the list of equal names, so the list is written from its
// end. A short name needs a description to be a card's.
static std::string writeCards(const std::vector<const CardEntry *> &cards) {
    std::string text;
    for (auto card = cards.rbegin(); card != cards.rend(); ++card) {
        text.append("Class ").append((*card)->cardClass).append("\n").append((*card)->name);
        text += (*card)->name.size() < 5 ? ", card\n" : "\n";
        text += extraLinesOf((*card)->extraLines);
    }
    return text;
}

void checkInput(std::string_view input) {
    const auto cards = readCards(input);
    require(std::ranges::is_sorted(cards, {}, &CardEntry::name), "cards are sorted by name");
    const std::string written = writeCards(cards);
    require(writeCards(readCards(written)) == written, "the cards that are written are read again");
    forgetCards();
}
