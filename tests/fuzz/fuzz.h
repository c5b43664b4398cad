// What the fuzz targets share. Each gives its inputs to one reader, as a file below the current
// directory, and checks what must hold for every input. A rule that is broken, an error that a
// sanitizer finds and an input that takes too long are faults.
//
// Messages are formatted and dropped; a fatal error is a fault.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "base/lists.h"
#include "support/files.h"

// The target's own: reads one input and checks what came of it.
void checkInput(std::string_view input);

// Reports a rule that is broken and ends the process as a crash does.
void require(bool held, const char *rule);

// The memory that a reader's records take: at most a small multiple of its input.
class MemoryBound {
  public:
    explicit MemoryBound(std::size_t inputSize);
    void check() const;

  private:
    std::size_t limit; // bytes in use in the whole process
};

// True when no line of the text, its line end included, is longer than `pieceMax` bytes: a reader
// takes every line whole.
bool linesFit(std::string_view text, std::size_t pieceMax);

// Releases a list that the program keeps until it exits.
template <ListRecord Record> void freeList(Record *&head) {
    FreeRecords()(std::exchange(head, nullptr));
}

// Empties the card list; no card, a screen's own included, may be used any more.
void forgetCards();

// The extra lines of a record as the lines of a file.
std::string extraLinesOf(std::string_view lines);
