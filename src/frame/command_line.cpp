#include "frame/command_line.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "catalogue/catalogue.h"
#include "config/config_lines.h"
#include "config/lists.h"
#include "config/screen_config.h"
#include "frame/messages.h"
#include "hwdb/card_list.h"

static constexpr int COMMAND_MARKS = 1; // catalogue cells show a mark in place of refresh rates

// Ends a command that wrote to standard output; what is lost of that is an error.
[[noreturn]] static void endCommand() {
    if (std::fflush(stdout) != 0 || std::ferror(stdout))
        systemError("standard output");
    std::exit(EXIT_SUCCESS);
}

[[noreturn]] static void printCardList() {
    loadCardList();
    printNumberedList(cardList);
    endCommand();
}

// Writes the catalogue to the file that the next argument names.
[[noreturn]] static void runCatalogue(void (*writeCatalogue)(const char *path, int marks),
                                      const char *path) {
    if (!path)
        fatalError("Invalid Option\n");
    writeCatalogue(path, COMMAND_MARKS);
    endCommand();
}

static bool isScreenNumber(std::string_view argument) {
    return argument.size() > 1 && argument[0] == '-' && argument[1] >= '0' && argument[1] <= '9';
}

void readCommandLine(int argc, char **argv) {
    for (int n = 1; n < argc; n++) {
        const std::string_view argument = argv[n];
        if (argument == "-lt")
            printCardList();
        else if (argument == "-l")
            runCatalogue(updateMifCatalogue, argv[n + 1]);
        else if (argument == "-lh")
            runCatalogue(writeHtmlCatalogue, argv[n + 1]);
        else if (isScreenNumber(argument))
            currentScreen = argument[1] - '0';
        else if (argument.starts_with('/'))
            configPath = argument;
        else if (argument == "-vdif")
            std::exit(EXIT_SUCCESS);
        else
            fatalError("Invalid Option\n");
    }
}
