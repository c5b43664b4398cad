#include "base/lasting_memory.h"

std::pmr::monotonic_buffer_resource lastingTexts, lastingRecords;

std::string_view keepText(std::string_view text) {
    char *const copy = static_cast<char *>(lastingTexts.allocate(text.size(), alignof(char)));
    text.copy(copy, text.size());
    return {copy, text.size()};
}
