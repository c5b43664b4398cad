// Records and texts that last until the process ends, each kind side by side in memory: spread over
// the heap a long list would be slow to sort and to print.
#pragma once

#include <memory_resource>
#include <string_view>
#include <type_traits>

// They take no memory before their first use: at the start running out of it could not be reported.
extern std::pmr::monotonic_buffer_resource lastingTexts, lastingRecords;

// A copy of `text` that lasts.
std::string_view keepText(std::string_view text);

// A copy of `record` that lasts.
template <typename Record> Record *keepRecord(const Record &record) {
    static_assert(std::is_trivially_destructible_v<Record>);
    return std::pmr::polymorphic_allocator<>(&lastingRecords).new_object<Record>(record);
}
