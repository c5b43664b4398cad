#include "frame/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

File openForReading(const std::string &path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return nullptr;
    struct stat status = {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(descriptor);
        return nullptr;
    }
    return File(fdopen(descriptor, "r"));
}
