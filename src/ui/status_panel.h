// The panel above the main menu: the present configuration of the screen that is edited.
#pragma once

#include "config/screen_config.h"

// Draws the panel, in full each time.
void drawStatusPanel(const ScreenConfig &screen);

// Takes the panel off the screen. drawStatusPanel was called before.
void clearStatusPanel();
