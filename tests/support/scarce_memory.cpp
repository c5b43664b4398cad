// Linked into a program: memory runs out at the n-th allocation, counted from 1, and stays so; n is
// the environment variable SCARCE_MEMORY.
#include <cstdlib>
#include <new>

static bool isExhausted() {
    static const char *limit = std::getenv("SCARCE_MEMORY");
    static long left = limit ? std::atol(limit) : 0;
    const bool exhausted = left == 1;
    left -= left > 1;
    return exhausted;
}

void *operator new(std::size_t size) {
    while (isExhausted()) {
        const std::new_handler handler = std::get_new_handler();
        if (!handler)
            throw std::bad_alloc();
        handler();
    }
    return std::malloc(size > 0 ? size : 1);
}

void *operator new(std::size_t size, const std::nothrow_t &) noexcept {
    try {
        return operator new(size);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

// Memory resources ask so; what they are asked for needs no more alignment than malloc gives.
void *operator new(std::size_t size, std::align_val_t) { return operator new(size); }

void operator delete(void *memory) noexcept { std::free(memory); }
void operator delete(void *memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void *memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
