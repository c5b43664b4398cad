// The command line.
#pragma once

// Examines the arguments in order. "-<digit>" sets currentScreen and a path sets configPath; a
// one-shot command does its work and ends the process, with status 0 unless something failed. For
// anything else, and a command without its file name, the end is "Invalid Option".
void readCommandLine(int argc, char **argv);
