#include "ui/card_selection.h"

#include <algorithm>
#include <optional>
#include <unordered_set>
#include <utility>

#include "base/lists.h"
#include "ui/dialog.h"
#include "ui/menu.h"

static constexpr int SELECTION_WIDTH = 60, SELECTION_MODES_WIDTH = 75; // columns

struct ModeChoice {
    ModeList modes;             // all modes of the card
    std::vector<int> selection; // positions of the chosen ones
    int width = 0, height = 0;  // pixels that the largest ones need
    int depth = 0;              // bits per pixel
};

struct VirtualSize {
    int width, height; // pixels
    std::string text = {};
};

// Null when the user goes back.
static CardEntry *chooseCard() {
    if (!cardList) {
        showNotice("No graphics cards found");
        return nullptr;
    }
    Menu menu =
        makeListMenu("Korvel-X Supported Graphics Cards", MENU_HINT_PREVIOUS, SELECTION_WIDTH, 0);
    addMenuItems(menu, cardList, &CardEntry::name);
    const int choice = askMenu(menu);
    return choice ? listNth(cardList, choice) : nullptr;
}

// The positions of the modes that the user chose; none when the user goes back.
static std::optional<std::vector<int>> askModes(const CardEntry &card, const ModeList &modes) {
    const bool multi = !(card.flags & CARD_NO_VIRTUAL);
    Menu menu = makeListMenu("Supported Modes for " + std::string(card.name), MENU_HINT,
                             SELECTION_MODES_WIDTH, multi ? MENU_MULTI : 0);
    addMenuItems(menu, modes.get(), &VideoMode::label);
    const int choice = askMenu(menu);
    if (choice == 0)
        return std::nullopt;
    if (!multi)
        return std::vector{choice};
    menu.marks.erase(std::ranges::find(menu.marks, 0), menu.marks.end());
    return std::move(menu.marks);
}

// Takes size and depth from the chosen modes; false when their depths differ.
static bool measureSelection(ModeChoice &choice) {
    const auto chosen = selectedModes(choice.modes, choice.selection);
    choice.depth = chosen.empty() ? 0 : chosen.front()->depth;
    for (const VideoMode *mode : chosen) {
        if (mode->depth != choice.depth)
            return false;
        choice.width = std::max(choice.width, mode->hDisplay);
        choice.height = std::max(choice.height, mode->vDisplay);
    }
    return true;
}

// Asks until all chosen modes have one depth; the entry is read anew each time. None when the user
// goes back or the card has no modes.
static std::optional<ModeChoice> chooseModes(CardEntry &card) {
    for (;;) {
        ModeChoice choice;
        choice.modes = readDisplayEntry(card);
        if (!choice.modes) {
            showNotice("No modes for this card");
            return std::nullopt;
        }
        auto selection = askModes(card, choice.modes);
        if (!selection)
            return std::nullopt;
        choice.selection = std::move(*selection);
        if (measureSelection(choice))
            return choice;
        showNotice("All modes must have the same color depth: Please reenter.");
    }
}

// The suffix after "a" is "b", after "z" comes "aa".
static void advanceSuffix(std::string &suffix) {
    auto letter = suffix.rbegin();
    for (; letter != suffix.rend() && *letter == 'z'; ++letter)
        *letter = 'a';
    if (letter == suffix.rend())
        suffix.insert(suffix.begin(), 'a');
    else
        ++*letter;
}

// The server tells the modes of a screen apart by name: a chosen mode that has the name of one
// before it gets a suffix, a new one each time.
static void renameDuplicates(const ModeChoice &choice) {
    std::unordered_set<std::string> names;
    std::string suffix = "a";
    for (VideoMode *mode : selectedModes(choice.modes, choice.selection)) {
        if (names.contains(mode->name)) {
            mode->name += suffix;
            advanceSuffix(suffix);
        }
        names.insert(mode->name);
    }
}

// The sizes of the card's modes that hold all chosen ones at their depth. A mode that shares its
// width or its height with the last size is no new one.
static std::vector<VirtualSize> virtualSizes(const ModeChoice &choice) {
    std::vector<VirtualSize> sizes;
    int lastWidth = -1, lastHeight = -1;
    for (const VideoMode *mode = choice.modes.get(); mode; mode = mode->next) {
        if (mode->hDisplay < choice.width || mode->vDisplay < choice.height ||
            mode->depth != choice.depth || mode->hDisplay == lastWidth ||
            mode->vDisplay == lastHeight)
            continue;
        lastWidth = mode->hDisplay;
        lastHeight = mode->vDisplay;
        std::string text = std::to_string(lastWidth) + " x " + std::to_string(lastHeight);
        text += sizes.empty() ? " (Same as screen resolution)" : "";
        sizes.push_back({lastWidth, lastHeight, std::move(text)});
    }
    return sizes;
}

// The size that the modes need or, where the card allows it, a larger one that the user chooses;
// none when the user goes back.
static std::optional<VirtualSize> chooseVirtualSize(const CardEntry &card,
                                                    const ModeChoice &choice) {
    const VirtualSize needed = {choice.width, choice.height};
    if (card.flags & CARD_NO_VIRTUAL)
        return needed;
    const auto sizes = virtualSizes(choice);
    if (sizes.size() <= 1)
        return needed;
    Menu menu =
        makeListMenu("Possible Virtual Screen Resolutions", MENU_HINT_PREVIOUS, SELECTION_WIDTH, 0);
    for (const VirtualSize &size : sizes)
        addMenuItem(menu, size.text);
    const int number = askMenu(menu);
    return number ? std::optional(sizes[number - 1]) : std::nullopt;
}

void selectCardAndModes(ScreenConfig &screen) {
    CardEntry *card = chooseCard();
    if (!card)
        return;
    auto choice = chooseModes(*card);
    if (!choice)
        return;
    renameDuplicates(*choice);
    const auto virtualSize = chooseVirtualSize(*card, *choice);
    if (!virtualSize)
        return;
    screen.card = card;
    screen.unchanged = false;
    screen.modes = std::move(choice->modes);
    screen.selection = std::move(choice->selection);
    screen.virtualWidth = virtualSize->width;
    screen.virtualHeight = virtualSize->height;
    screen.depth = choice->depth;
}
