// The entry point.
#include <fcntl.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <new>

#include "base/messages.h"
#include "frame/command_line.h"
#include "frame/main_menu.h"
#include "frame/startup.h"

// Descriptors of standard streams that are closed get one that can be neither read nor written:
// otherwise the next file that is opened would take the place, and messages would go into it.
static void occupyStandardStreams() {
    int descriptor;
    do
        descriptor = open("/", O_PATH);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor >= 0)
        close(descriptor);
}

int main(int argc, char **argv) {
    occupyStandardStreams();
    std::setlocale(LC_CTYPE, "");  // line drawing follows the terminal; numbers keep their form
    std::signal(SIGXFSZ, SIG_IGN); // a file that grows too large is an error of its write
    std::set_new_handler([] { fatalError("Out of memory\n"); });
    loadMonitors();
    readCommandLine(argc, argv);
    prepareInteractiveMode(argc > 0 ? argv[0] : "scrconf");
    runInteractiveMode();
    return 0;
}
