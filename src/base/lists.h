// Operations on singly linked records. Every record that is kept in a list begins with `next`, the
// link to the following record, and has its name or keyword text as second field.
#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/file.h"
#include "base/number_text.h"

inline constexpr std::size_t LIST_NUMBER_WIDTH = 3; // characters; larger numbers take more

// Bytes of lines that are written at once. One line more still fits the stream's 4096 bytes, so
// what cannot be written stays there until the close, which tries again and tells the reason.
inline constexpr std::size_t LIST_BLOCK_SIZE = 2048;

template <typename Record>
concept ListRecord = requires(Record record) {
    { record.next } -> std::same_as<Record *&>;
};

template <typename Record>
concept NamedRecord = ListRecord<Record> && requires(Record record) {
    { record.name } -> std::convertible_to<std::string_view>;
};

// The n-th record of a list, from 1. The caller keeps 1 <= n <= listCount(head).
template <ListRecord Record> Record *listNth(Record *head, int n) {
    while (--n > 0)
        head = head->next;
    return head;
}

template <ListRecord Record> int listCount(const Record *head) {
    int count = 0;
    for (; head; head = head->next)
        count++;
    return count;
}

// The records of a list, in its order.
template <ListRecord Record> std::vector<Record *> listRecords(Record *head) {
    std::vector<Record *> records;
    records.reserve(static_cast<std::size_t>(listCount(head)));
    for (; head; head = head->next)
        records.push_back(head);
    return records;
}

// A new list with one record for each text of `table`, in its order; the records' `text` fields
// refer to the table's texts. Null for an empty table.
template <ListRecord Record, typename Table>
Record *listFromTable(const Table &table, std::string_view Record::*text) {
    Record *head = nullptr;
    Record **end = &head;
    for (const std::string_view entry : table) {
        *end = new Record;
        (*end)->*text = entry;
        end = &(*end)->next;
    }
    return head;
}

// Releases the records of a list, which is empty then.
template <ListRecord Record> void freeList(Record *&head) {
    while (head)
        delete std::exchange(head, head->next);
}

// Links the records that `recordOf` finds in the entries to a list, in the order of the entries.
template <ListRecord Record, typename Entries, typename RecordOf>
void linkRecords(Record *&head, const Entries &entries, RecordOf recordOf) {
    Record **end = &head;
    for (const auto &entry : entries) {
        *end = std::invoke(recordOf, entry);
        end = &(*end)->next;
    }
    *end = nullptr;
}

// Sorts a list by a key of its records; records of equal key keep their order.
template <ListRecord Record, typename Key> void sortList(Record *&head, Key key) {
    std::vector<Record *> records = listRecords(head);
    std::ranges::stable_sort(records, {}, key);
    linkRecords(head, records, std::identity());
}

// A record that is being sorted by name, with the bytes of the name that are compared.
template <NamedRecord Record> struct SortEntry {
    std::uint64_t bytes;
    Record *record;
};

// Up to 8 bytes of a text as a number that sorts as they do.
inline std::uint64_t sortBytes(std::string_view text, std::size_t from) {
    std::array<char, sizeof(std::uint64_t)> part = {};
    text.copy(part.data(), part.size(), std::min(from, text.size()));
    std::uint64_t bytes = 0;
    for (const char byte : part)
        bytes = bytes << 8 | static_cast<std::uint8_t>(byte);
    return bytes;
}

// Sorts records whose names agree in the bytes before `from`. Their order in memory is another one,
// so to compare the names themselves would be a wait for memory each time.
template <NamedRecord Record>
void sortEntries(std::span<SortEntry<Record>> entries, std::size_t from) {
    for (SortEntry<Record> &entry : entries)
        entry.bytes = sortBytes(entry.record->name, from);
    std::ranges::stable_sort(entries, {}, &SortEntry<Record>::bytes);
    for (auto begin = entries.begin(); begin != entries.end();) {
        const auto end = std::find_if(begin, entries.end(), [begin](const auto &entry) {
            return entry.bytes != begin->bytes;
        });
        const bool namesEnd = (begin->bytes & 0xff) == 0;
        if (end - begin > 1 && !namesEnd)
            sortEntries(std::span(begin, end), from + sizeof begin->bytes);
        begin = end;
    }
}

// Sorts a list by name, byte by byte; names hold no NUL byte. Records of equal name keep their
// order.
template <NamedRecord Record> void sortListByName(Record *&head) {
    std::vector<SortEntry<Record>> entries;
    entries.reserve(static_cast<std::size_t>(listCount(head)));
    for (Record *record = head; record; record = record->next)
        entries.push_back({0, record});
    sortEntries(std::span(entries), 0);
    linkRecords(head, entries, &SortEntry<Record>::record);
}

// Writes one line per record to standard output, numbered from 1. Of a name with a ":" only the
// text after the first one is shown.
template <NamedRecord Record> void printNumberedList(const Record *head) {
    std::string lines;
    for (int number = 1; head; head = head->next, number++) {
        const std::string_view name = head->name;
        appendNumber(lines, number, LIST_NUMBER_WIDTH);
        lines.append(". ").append(name.substr(name.find(':') + 1)).push_back('\n');
        if (lines.size() >= LIST_BLOCK_SIZE || !head->next) {
            writeText(stdout, lines);
            lines.clear();
        }
    }
}
