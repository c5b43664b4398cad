// scrconf-edid: writes the monitor file of a monitor from its EDID.
#include <algorithm>
#include <cstdlib>

#include "base/file.h"
#include "base/messages.h"
#include "edid/edid_files.h"
#include "edid/vdif_writer.h"

// Lists the connectors, of which the user is to name one.
[[noreturn]] static void refuseConnectors(const std::vector<Connector> &connectors) {
    for (const Connector &connector : connectors)
        showMessage("%s: %s%s\n", connector.edidPath.c_str(), connector.status.c_str(),
                    connector.hasEdid ? "" : ", no EDID");
    fatalError("Not exactly one monitor with an EDID is connected\n");
}

// The path of the EDID of the one monitor that is connected.
static std::string findMonitor() {
    const std::vector<Connector> connectors = findConnectors();
    if (std::ranges::count(connectors, true, &Connector::hasEdid) != 1)
        refuseConnectors(connectors);
    return std::ranges::find(connectors, true, &Connector::hasEdid)->edidPath;
}

static std::string convert(const std::string &path) {
    const auto bytes = readBytes(path, EDID_SIZE_MAX);
    if (!bytes)
        systemError("Cannot read %s", path.c_str());
    Edid edid;
    if (const std::string fault = decodeEdid(*bytes, edid); !fault.empty())
        fatalError("%s %s\n", path.c_str(), fault.c_str());
    for (const std::string &fault : edid.lostExtensions)
        showMessage("%s: %s, left out\n", path.c_str(), fault.c_str());
    std::string text = vdifText(edid);
    if (text.empty())
        fatalError("%s lists no timing that can be used\n", path.c_str());
    return text;
}

int main(int argc, char **argv) {
    if (argc > 2 || (argc == 2 && argv[1][0] == '-'))
        fatalError("Invalid Option\nusage: scrconf-edid [FILE]\n");
    const std::string path = argc == 2 ? argv[1] : findMonitor();
    writeText(stdout, convert(path));
    if (!closeWritten(File(stdout)))
        systemError("standard output");
    return EXIT_SUCCESS;
}
