// What saving a file safely costs at the least:
//     bench_replace FILE
// writes the bytes of FILE to a new file beside it, syncs that, renames it to FILE, syncs the
// folder, and prints the time in ms that this took. Exit status 1: a step failed.
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

static bool replace(const fs::path &path, const std::string &text) {
    const fs::path temporary = fs::path(path) += ".new";
    const int file = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const int folder = open(path.parent_path().c_str(), O_RDONLY | O_DIRECTORY);
    return write(file, text.data(), text.size()) == std::ssize(text) && fsync(file) == 0 &&
           close(file) == 0 && std::rename(temporary.c_str(), path.c_str()) == 0 &&
           fsync(folder) == 0 && close(folder) == 0;
}

int main(int argc, char **argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FILE\n", argv[0]);
        return 2;
    }
    const fs::path path = fs::absolute(argv[1]);
    std::ifstream stream(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    const auto start = Clock::now();
    if (!replace(path, text)) {
        std::perror(argv[1]);
        return 1;
    }
    std::printf("%.3f\n", std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    return 0;
}
