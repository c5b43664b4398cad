// A test case in a fresh directory of its own, which is the current directory while it runs.
#pragma once

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

class TempDirTest : public testing::Test {
  protected:
    TempDirTest();
    ~TempDirTest() override;

    // What the code under test wrote to standard error since the case began or since the last call.
    std::string messages();

    std::filesystem::path directory; // absolute

  private:
    std::filesystem::path previous;
    int messageFile;    // takes what is written to standard error
    int terminalErrors; // the standard error of the whole run
};

// Writes a file, making its folders first. `path` is relative to the current directory.
void writeFile(const std::filesystem::path &path, std::string_view text);

std::string readFile(const std::filesystem::path &path);

// A file of tests/data: its path and its text.
inline std::string samplePath(const std::string &name) {
    return SCRCONF_SOURCE_DIR "/tests/data/" + name;
}
inline std::string sampleFile(const std::string &name) { return readFile(samplePath(name)); }
