// The screen that opens the interactive mode.
#pragma once

// Shows the product, its vendor and what is to be selected, waits for a key and clears the screen.
void showInformationScreen();
