#include "frame/file.h"

#include <sys/stat.h>

File openForReading(const std::string &path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return nullptr;
    return File(std::fopen(path.c_str(), "re"));
}
