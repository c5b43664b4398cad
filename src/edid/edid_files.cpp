#include "edid/edid_files.h"

#include <algorithm>
#include <filesystem>

#include "base/file.h"
#include "base/paths.h"

namespace fs = std::filesystem;

static constexpr std::size_t STATUS_SIZE_MAX = 32; // bytes

std::optional<std::vector<unsigned char>> readBytes(const std::string &path, std::size_t sizeMax) {
    const File file = openForReading(path);
    if (!file)
        return std::nullopt;
    std::vector<unsigned char> bytes(sizeMax);
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
    return std::ferror(file.get()) ? std::nullopt : std::optional(std::move(bytes));
}

static std::string readStatus(const fs::path &path) {
    const auto bytes = readBytes(path, STATUS_SIZE_MAX).value_or(std::vector<unsigned char>());
    return {bytes.begin(), std::ranges::find(bytes, '\n')};
}

std::vector<Connector> findConnectors() {
    std::vector<Connector> connectors;
    std::error_code error; // a folder that cannot be read has no connectors
    for (const auto &entry : fs::directory_iterator(CONNECTOR_DIR, error)) {
        const fs::path edid = entry.path() / "edid";
        const auto start = readBytes(edid, 1);
        if (start)
            connectors.push_back({edid, readStatus(entry.path() / "status"), !start->empty()});
    }
    std::ranges::sort(connectors, {}, &Connector::edidPath);
    return connectors;
}
