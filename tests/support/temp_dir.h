// A test case in a fresh directory of its own, which is the current directory while it runs.
#pragma once

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "support/files.h"

class TempDirTest : public testing::Test {
  protected:
    TempDirTest();
    ~TempDirTest() override;

    // What the code under test wrote to standard error since the case began or since the last call.
    std::string messages();

    std::filesystem::path directory; // absolute

  private:
    int messageFile;    // takes what is written to standard error
    int terminalErrors; // the standard error of the whole run
};
