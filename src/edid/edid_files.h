// Where the system shows the EDIDs of its monitors: a folder for each connector of a graphics card,
// with the files "edid", empty without a monitor, and "status".
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

struct Connector {
    std::string edidPath;
    std::string status; // "connected", "disconnected" or "unknown"
    bool hasEdid = false;
};

// The first `sizeMax` bytes of a regular file, read up to its end: the size that the system gives
// for such a file tells nothing. None, with the reason in errno, when it cannot be read.
std::optional<std::vector<unsigned char>> readBytes(const std::string &path, std::size_t sizeMax);

// The connectors below CONNECTOR_DIR, sorted by path; none on a machine that shows none.
std::vector<Connector> findConnectors();
