#include "base/line_reader.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "base/messages.h"

static constexpr std::size_t READER_BLOCK_SIZE = 16384; // bytes; far above every piece size

// Moves the rest of the block to its front and fills the space behind it.
static void fillBlock(LineReader &reader) {
    std::memmove(reader.block.get(), reader.block.get() + reader.begin, reader.end - reader.begin);
    reader.end -= reader.begin;
    reader.begin = 0;
    const std::size_t space = READER_BLOCK_SIZE - reader.end;
    const std::size_t count =
        std::fread(reader.block.get() + reader.end, 1, space, reader.file.get());
    if (std::ferror(reader.file.get()))
        reader.error = errno;
    reader.end += count;
    reader.atEnd = count < space;
}

std::optional<LineReader> openLines(const FilePlace &place, std::size_t pieceMax) {
    File file = openForReading(place);
    if (!file)
        return std::nullopt;
    std::setvbuf(file.get(), nullptr, _IONBF, 0); // the block is the buffer
    return LineReader{std::move(file), place.path, pieceMax,
                      std::make_unique_for_overwrite<char[]>(READER_BLOCK_SIZE)};
}

bool tryReadPiece(LineReader &reader, std::string_view &piece) {
    if (!reader.atEnd && reader.end - reader.begin < reader.pieceMax)
        fillBlock(reader);
    if (reader.error != 0)
        return false;
    const std::size_t limit = std::min(reader.end - reader.begin, reader.pieceMax);
    piece = std::string_view(reader.block.get() + reader.begin, limit);
    if (const auto lineEnd = piece.find('\n'); lineEnd != piece.npos)
        piece = piece.substr(0, lineEnd + 1);
    reader.begin += piece.size();
    return !piece.empty();
}

bool tryReadBlock(LineReader &reader, std::string_view &block) {
    if (!reader.atEnd && reader.begin == reader.end)
        fillBlock(reader);
    if (reader.error != 0)
        return false;
    block = std::string_view(reader.block.get() + reader.begin, reader.end - reader.begin);
    reader.begin = reader.end;
    return !block.empty();
}

void returnBytes(LineReader &reader, std::size_t count) { reader.begin -= count; }

bool readPiece(LineReader &reader, std::string_view &piece) {
    if (tryReadPiece(reader, piece))
        return true;
    if (reader.error != 0)
        fatalError("Cannot read %s\n", reader.path.c_str());
    return false;
}

bool readLine(LineReader &reader, std::string_view &line) {
    if (!readPiece(reader, line))
        return false;
    line = line.substr(0, line.find('\0'));
    return true;
}
