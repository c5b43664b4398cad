#include "frame/command_line.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "base/ascii.h"
#include "base/file.h"
#include "base/messages.h"
#include "catalogue/html_page.h"
#include "catalogue/mif_document.h"
#include "config/config_file.h"
#include "config/screen_config.h"
#include "frame/numbered_list.h"
#include "hwdb/card_list.h"

static constexpr bool COMMAND_MARKS = true; // catalogue cells show no refresh rates

// A command that writes the catalogue in one format, to the file that the next argument names.
struct CatalogueCommand {
    std::string_view option;
    void (*write)(const char *path, bool marks);
};
static constexpr auto COMMAND_CATALOGUES =
    std::to_array<CatalogueCommand>({{"-l", updateMifCatalogue}, {"-lh", writeHtmlCatalogue}});

// Ends a command that wrote to standard output. On a full disk, say, the stream may tell only at
// its close that a part of it is lost, and the command has failed then.
[[noreturn]] static void endCommand() {
    if (!closeWritten(File(stdout)))
        systemError("standard output");
    std::exit(EXIT_SUCCESS);
}

[[noreturn]] static void printCardList() {
    loadCardList();
    printNumberedList(cardList);
    endCommand();
}

// Ends the process when the argument is a catalogue command; `path` is the argument behind it.
static void runCatalogueCommand(std::string_view argument, const char *path) {
    for (const CatalogueCommand &command : COMMAND_CATALOGUES) {
        if (argument != command.option)
            continue;
        if (!path)
            fatalError("Invalid Option\n");
        command.write(path, COMMAND_MARKS);
        endCommand();
    }
}

// What follows the digit is not looked at.
static bool isScreenNumber(std::string_view argument) {
    return argument.size() > 1 && argument[0] == '-' && isDigit(argument[1]);
}

void readCommandLine(int argc, char **argv) {
    for (int n = 1; n < argc; n++) {
        const std::string_view argument = argv[n];
        runCatalogueCommand(argument, argv[n + 1]); // null behind the last argument
        if (argument == "-lt")
            printCardList();
        else if (isScreenNumber(argument))
            currentScreen = argument[1] - '0';
        else if (argument.starts_with('/'))
            configPath = argument;
        else if (argument == "-vdif") // the monitor files have been loaded, which is all it asks
            std::exit(EXIT_SUCCESS);
        else
            fatalError("Invalid Option\n");
    }
}
