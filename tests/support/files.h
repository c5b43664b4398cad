// Files of the tests.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

// Writes a file, making its folders first. `path` is relative to the current directory.
void writeFile(const std::filesystem::path &path, std::string_view text);

// The text of a file; empty without one and for a device.
std::string readFile(const std::filesystem::path &path);

// A file of tests/data: its path and its text.
inline std::string samplePath(const std::string &name) {
    return SCRCONF_SOURCE_DIR "/tests/data/" + name;
}
inline std::string sampleFile(const std::string &name) { return readFile(samplePath(name)); }

// The output of a shell command.
std::string outputOf(const std::string &command);
