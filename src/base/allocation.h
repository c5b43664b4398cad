// Exhausted memory, where it is not to end the process in the usual way.
#pragma once

#include <new>

// While it lives, exhausted memory is the exception std::bad_alloc.
struct AllocationGuard {
    std::new_handler previous = std::set_new_handler(nullptr);
    AllocationGuard() = default;
    AllocationGuard(const AllocationGuard &) = delete;
    AllocationGuard &operator=(const AllocationGuard &) = delete;
    ~AllocationGuard() { std::set_new_handler(previous); }
};
