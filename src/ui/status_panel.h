// The panel above the main menu: the present configuration of the screen that is edited.
#pragma once

#include "config/screen_config.h"
#include "ui/window.h"

// A window of the panel's size and place.
Window openStatusPanel();

// Draws the panel for a screen in its window, in full each time; hideWindow takes it off again.
void drawStatusPanel(WINDOW *panel, const ScreenConfig &screen);
