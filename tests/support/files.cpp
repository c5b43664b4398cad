#include "support/files.h"

#include <cstdio>
#include <fstream>
#include <iterator>

void writeFile(const std::filesystem::path &path, std::string_view text) {
    if (path.has_parent_path())
        std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

std::string readFile(const std::filesystem::path &path) {
    if (!std::filesystem::is_regular_file(path))
        return "";
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::string outputOf(const std::string &command) {
    std::FILE *pipe = popen(command.c_str(), "r");
    std::string text;
    for (int byte; (byte = std::getc(pipe)) != EOF;)
        text += static_cast<char>(byte);
    pclose(pipe);
    return text;
}
