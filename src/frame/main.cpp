// The entry point.
#include <clocale>
#include <new>

#include "frame/command_line.h"
#include "frame/main_menu.h"
#include "frame/messages.h"
#include "frame/startup.h"

int main(int argc, char **argv) {
    std::setlocale(LC_CTYPE, ""); // line drawing follows the terminal; numbers keep their form
    std::set_new_handler([] { fatalError("Out of memory\n"); });
    loadMonitors();
    readCommandLine(argc, argv);
    prepareInteractiveMode(argc > 0 ? argv[0] : "scrconf");
    runInteractiveMode();
    return 0;
}
