// The interactive mode.
#pragma once

// Runs the interactive mode from the information screen to the user's choice to save or to quit.
void runInteractiveMode();
