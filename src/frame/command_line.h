// The command line.
#pragma once

// Examines the arguments in order. "-<digit>" sets currentScreen and a path sets configPath; a
// one-shot command does its work and ends the process with status 0. Anything else, and a command
// without its file name, ends the process with "Invalid Option".
void readCommandLine(int argc, char **argv);
