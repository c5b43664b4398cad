// The screens behind "Graphics Card": the card, its display modes and the virtual screen size.
#pragma once

#include "config/screen_config.h"

// Lets the user choose a card, modes of one depth and, where the card allows it, a virtual size of
// at least the largest of the modes, and stores them in the screen record. The record stays as it
// is when the user goes back to the previous menu or there is nothing to choose from.
void selectCardAndModes(ScreenConfig &screen);
