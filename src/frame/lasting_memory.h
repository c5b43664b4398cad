// Memory of records and texts that last until the process ends. They lie side by side in it:
// spread over the heap a long list would be slow to sort and to print.
#pragma once

#include <memory_resource>
#include <string_view>
#include <type_traits>

// Takes no memory itself before the first use, when running out of it could not be reported yet.
extern std::pmr::monotonic_buffer_resource lastingMemory;

// A copy of `text` that lasts.
std::string_view keepText(std::string_view text);

// A copy of `record` that lasts.
template <typename Record> Record *keepRecord(const Record &record) {
    static_assert(std::is_trivially_destructible_v<Record>);
    return std::pmr::polymorphic_allocator<>(&lastingMemory).new_object<Record>(record);
}
