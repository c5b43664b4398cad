#include "fuzz/fuzz.h"

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <sanitizer/allocator_interface.h>

#include "base/lasting_memory.h"
#include "base/messages.h"
#include "hwdb/card_list.h"

// A record is larger than the shortest line that makes one, so much at most.
static constexpr std::size_t MEMORY_PER_BYTE = 64;
static constexpr std::size_t MEMORY_ALWAYS = 32768; // bytes, whatever the input

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    checkInput({reinterpret_cast<const char *>(data), size});
    return 0;
}

// All messages, so that the linker has no need of the library's.

void showMessage(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
}

void fatalError(const char *format, ...) {
    std::fprintf(stderr, "Fatal: %s", format);
    std::abort();
}

void systemError(const char *format, ...) {
    std::fprintf(stderr, "System error: %s\n", format);
    std::abort();
}

void require(bool held, const char *rule) {
    if (held)
        return;
    std::fprintf(stderr, "Broken: %s\n", rule);
    std::abort();
}

MemoryBound::MemoryBound(std::size_t inputSize)
    : limit(__sanitizer_get_current_allocated_bytes() + MEMORY_ALWAYS +
            MEMORY_PER_BYTE * inputSize) {}

void MemoryBound::check() const {
    require(__sanitizer_get_current_allocated_bytes() <= limit,
            "memory stays within a small multiple of the input");
}

void forgetCards() {
    cardList = nullptr;
    lastingTexts.release();
    lastingRecords.release();
}

std::string extraLinesOf(std::string_view lines) {
    std::string text;
    for (std::size_t size; !lines.empty(); lines.remove_prefix(size)) {
        size = lines.find('\n') + 1;
        require(size > 0, "an extra line has a line end");
        text.append(": ").append(lines.substr(0, size));
    }
    return text;
}

bool linesFit(std::string_view text, std::size_t pieceMax) {
    while (!text.empty()) {
        const std::size_t size = std::min(text.find('\n'), text.size() - 1) + 1;
        if (size > pieceMax)
            return false;
        text.remove_prefix(size);
    }
    return true;
}
