// Operations on singly linked records. A record has `next`, the link to the following record, null
// in the last one; a list is reached by its first record, null for an empty list.
#pragma once

#include <concepts>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

template <typename Record>
concept ListRecord = requires(Record record) {
    { record.next } -> std::same_as<Record *&>;
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

// A list that grows at its end. It does not own the records.
template <ListRecord Record> struct ListBuilder {
    Record *head = nullptr;
    Record *last = nullptr;
};

// Makes the record, whatever it was linked to before, the last one.
template <ListRecord Record> void appendRecord(ListBuilder<Record> &list, Record *record) {
    record->next = nullptr;
    (list.last ? list.last->next : list.head) = record;
    list.last = record;
}

// A new list with one record for each text of `table`, in its order; the records' `text` fields
// refer to the table's texts. Null for an empty table.
template <ListRecord Record, typename Table>
Record *listFromTable(const Table &table, std::string_view Record::*text) {
    ListBuilder<Record> list;
    for (const std::string_view entry : table) {
        auto *record = new Record;
        record->*text = entry;
        appendRecord(list, record);
    }
    return list.head;
}

// Releases one record after the other: were each to release the next, a long list would take as
// many calls within each other.
struct FreeRecords {
    template <ListRecord Record> void operator()(Record *head) const {
        while (head)
            delete std::exchange(head, head->next);
    }
};

// A list of records made by `new`, which releases them.
template <ListRecord Record> using OwnedList = std::unique_ptr<Record, FreeRecords>;
