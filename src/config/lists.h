// Operations on singly linked records. Every record that is kept in a list begins with `next`, the
// link to the following record, and has its name or keyword text as second field.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "frame/file.h"
#include "frame/number_text.h"

inline constexpr std::size_t LIST_NUMBER_WIDTH = 3; // characters; larger numbers take more

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

// Sorts a list by a key of its records; records of equal key keep their order.
template <ListRecord Record, typename Key> void sortList(Record *&head, Key key) {
    std::vector<Record *> records;
    for (Record *record = head; record; record = record->next)
        records.push_back(record);
    std::ranges::stable_sort(records, {}, key);
    Record **end = &head;
    for (Record *record : records) {
        *end = record;
        end = &record->next;
    }
    *end = nullptr;
}

// Sorts a list by name, byte by byte.
template <NamedRecord Record> void sortListByName(Record *&head) { sortList(head, &Record::name); }

// Writes one line per record to standard output, numbered from 1. Of a name with a ":" only the
// text after the first one is shown.
template <NamedRecord Record> void printNumberedList(const Record *head) {
    std::string line;
    for (int number = 1; head; head = head->next, number++) {
        const std::string_view name = head->name;
        line.clear();
        appendNumber(line, number, LIST_NUMBER_WIDTH);
        line.append(". ").append(name.substr(name.find(':') + 1)).push_back('\n');
        writeText(stdout, line);
    }
}
