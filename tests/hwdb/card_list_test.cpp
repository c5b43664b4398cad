#include "hwdb/card_list.h"

#include "base/lists.h"
#include "base/paths.h"
#include "support/temp_dir.h"

struct CardListTest : TempDirTest {
    void SetUp() override { cardList = nullptr; }
};

// A line per card, with its name and its class, and its extra lines.
static std::string shownCards() {
    std::string shown;
    for (const CardEntry *card = cardList; card; card = card->next) {
        shown.append("[").append(card->name).append("] ").append(card->cardClass);
        shown.append("\n").append(card->extraLines);
    }
    return shown;
}

TEST_F(CardListTest, CardsAreSortedWithClassAndExtraLines) {
    EXPECT_EXIT(loadCardList(), testing::ExitedWithCode(1), "Can't Open Card List .*CardInfo\n");
    writeFile(CARD_LIST_PATH, sampleFile("CardInfo"));
    loadCardList();
    EXPECT_EQ(shownCards(), "[ blank first] c slow\nlast\n"
                            "[Gamma] fast\n"
                            "[Same card] \n"
                            "[Same card] fast\n"
                            "[beta card ] fast\nbefore the first card\n\nafter beta\n");
    EXPECT_EQ(messages(), "Card Orphan has no class: ignored\n");
}

TEST_F(CardListTest, ALongLineIsReadInPieces) {
    const std::string whole(1021, 'a'), full(1022, 'b');
    writeFile(CARD_LIST_PATH,
              "Class x\n" + whole + "\n" + full + "\n" + full + "rest\n" + full + "a card\n");
    loadCardList();
    const std::string shown = "[" + full + "] x\n";
    EXPECT_EQ(shownCards(), "[a card] x\n[" + whole + "] x\n" + shown + shown + shown);
}
