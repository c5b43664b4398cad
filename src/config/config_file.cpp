#include "config/config_file.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "base/messages.h"
#include "base/paths.h"

namespace fs = std::filesystem;

static constexpr std::size_t CONFIG_PATH_MAX = 255; // bytes of a per-user path

std::string configPath;
std::optional<FileState> configState;
bool templateUsed = false;

static std::optional<FilePlace> place; // of configPath, from openConfigFile on

// The path of the per-user configuration; none without HOME or when it is too long.
static std::optional<std::string> userConfigPath() {
    const char *home = std::getenv("HOME");
    if (!home)
        return std::nullopt;
    std::string path = home;
    path += path.ends_with('/') ? ".Xconfig" : "/.Xconfig";
    return path.size() <= CONFIG_PATH_MAX ? std::optional(path) : std::nullopt;
}

std::optional<std::string> locateConfigFile() {
    if (const auto path = userConfigPath(); path && fileState(*path))
        return path;
    if (fileState(CONFIG_PATH))
        return CONFIG_PATH;
    return std::nullopt;
}

// True when the path leads to the temporary file, through links and mounts as well.
static bool isTemporaryFile(const fs::path &path) {
    const fs::path temporary = CONFIG_TEMP_PATH;
    std::error_code error;
    const fs::path target = fs::weakly_canonical(path, error);
    return path == temporary ||
           (target.filename() == temporary.filename() &&
            fs::equivalent(target.parent_path(), temporary.parent_path(), error));
}

// Saving removes the temporary file, so it must not be what is edited, and replaces regular files
// only.
static void checkConfigFile() {
    if (isTemporaryFile(configPath))
        fatalError("Cannot edit the temporary file %s\n", configPath.c_str());
    if (configState && !S_ISREG(configState->mode))
        fatalError("%s is not a regular file\n", configPath.c_str());
}

// From now on the place opens no other file, whatever a link is made to lead to meanwhile.
static void noteState() {
    configState = fileState(*place);
    place->expected = configState ? std::make_shared<const FileState>(*configState) : nullptr;
}

void openConfigFile() {
    if (configPath.empty())
        configPath = locateConfigFile().value_or(CONFIG_PATH);
    place = openPlace(configPath);
    if (!place)
        fatalError("Cannot open the folder of %s: %s\n", configPath.c_str(), std::strerror(errno));
    noteState();
    checkConfigFile();
}

const FilePlace &configPlace() { return *place; }

FilePlace sectionSource() { return templateUsed ? FilePlace(TEMPLATE_PATH) : configPlace(); }

bool configChanged() { return fileState(configPlace()) != configState; }

void acceptChangeTime() {
    auto state = fileState(configPlace());
    if (!state || !configState)
        return;
    configState->changed = state->changed;
    place->expected = std::make_shared<const FileState>(*configState);
}

bool configIsLink() {
    const auto state = linkState(configPlace());
    return state && S_ISLNK(state->mode);
}
