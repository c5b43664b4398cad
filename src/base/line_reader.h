// Reading a text file in pieces, the way all data files are read: a piece is a line with its line
// end or, of a line longer than the file's limit, the next part of it, handled as a line of its
// own.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/file.h"

struct LineReader {
    File file;
    std::string path;              // for messages
    std::size_t pieceMax = 0;      // bytes, the line end included
    std::unique_ptr<char[]> block; // what was read of the file last
    std::size_t begin = 0;         // first byte of `block` that was not handed out yet
    std::size_t end = 0;           // first byte of `block` that holds nothing
    bool atEnd = false;            // the file holds no more than `block`
    int error = 0;                 // errno of a read that failed
};

// Opens a regular file to be read in pieces of at most `pieceMax` bytes; none when it cannot be
// opened, with the reason in errno.
std::optional<LineReader> openLines(const FilePlace &place, std::size_t pieceMax);

// The next piece, byte for byte, NUL bytes included; valid until the next call. False at the end
// of the file. A file that cannot be read on ends the process: half a file is no basis to go on.
bool readPiece(LineReader &reader, std::string_view &piece);

// As readPiece, for a caller who has something to tidy up: a file that cannot be read on ends, with
// the reason in `error`.
bool tryReadPiece(LineReader &reader, std::string_view &piece);

// As tryReadPiece, for a caller to whom lines do not matter: as much as is at hand, of any length.
bool tryReadBlock(LineReader &reader, std::string_view &block);

// Gives back the last `count` bytes of the block that was read last.
void returnBytes(LineReader &reader, std::size_t count);

// As readPiece, for text that is parsed: a NUL byte ends the line.
bool readLine(LineReader &reader, std::string_view &line);
