#include "base/line_reader.h"

#include <sys/stat.h>

#include <vector>

#include "support/temp_dir.h"

using LineReaderTest = TempDirTest;
using namespace std::string_literals;

static std::vector<std::string> readPieces(const std::string &path, std::size_t pieceMax) {
    std::vector<std::string> pieces;
    auto reader = openLines(path, pieceMax);
    for (std::string_view piece; readPiece(*reader, piece);)
        pieces.emplace_back(piece);
    return pieces;
}

TEST_F(LineReaderTest, LongLinesComeInPiecesAndEveryByteSurvives) {
    writeFile("text", "abcdefgh\n\n12345678\nx\0y\nend"s);
    EXPECT_EQ(readPieces("text", 8),
              (std::vector{"abcdefgh"s, "\n"s, "\n"s, "12345678"s, "\n"s, "x\0y\n"s, "end"s}));
}

TEST_F(LineReaderTest, NothingIsLostWhereBlocksMeet) {
    std::string text;
    for (int n = 0; n < 40000; n++)
        text += std::string(n % 1500, static_cast<char>('a' + n % 26)) + (n % 3 ? "\n" : "");
    writeFile("big", text);
    std::string joined;
    for (const std::string &piece : readPieces("big", 1023)) {
        ASSERT_LE(piece.size(), 1023u);
        ASSERT_TRUE(piece.find('\n') >= piece.size() - 1) << "a line end inside a piece";
        joined += piece;
    }
    EXPECT_TRUE(joined == text);
}

TEST_F(LineReaderTest, OnlyRegularFilesOpen) {
    ASSERT_EQ(mkfifo("fifo", 0600), 0); // would block for ever
    EXPECT_FALSE(openLines("fifo", 100));
    EXPECT_FALSE(openLines(".", 100));
    EXPECT_FALSE(openLines("missing", 100));
}
