#include "support/temp_dir.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

TempDirTest::TempDirTest() {
    std::string name = (std::filesystem::temp_directory_path() / "scrconf-test-XXXXXX").string();
    directory = mkdtemp(name.data());
    std::filesystem::current_path(directory);
    terminalErrors = dup(STDERR_FILENO);
    messageFile = open(".", O_TMPFILE | O_RDWR | O_APPEND, 0600);
    dup2(messageFile, STDERR_FILENO);
}

TempDirTest::~TempDirTest() {
    dup2(terminalErrors, STDERR_FILENO);
    close(terminalErrors);
    close(messageFile);
    std::filesystem::current_path("/");
    std::error_code stillWritten; // by a process that a browser has left
    std::filesystem::remove_all(directory, stillWritten);
}

std::string TempDirTest::messages() {
    std::string text(static_cast<std::size_t>(lseek(messageFile, 0, SEEK_END)), '\0');
    const ssize_t length = pread(messageFile, text.data(), text.size(), 0);
    text.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    if (ftruncate(messageFile, 0) != 0)
        ADD_FAILURE() << "the messages stay";
    return text;
}
