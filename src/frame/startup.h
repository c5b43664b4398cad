// The steps from the start of the process to the interactive mode.
#pragma once

// Loads the timing library and the monitor file that VDIF_FILE names; a description that cannot be
// loaded ends the process.
void loadMonitors();

// Prepares the interactive mode: the root check, the configuration or its template, the screen to
// edit, the pointer devices and the card list. What cannot be used ends the process with a message.
void prepareInteractiveMode(const char *programName);
