#include "base/line_reader.h"

#include <vector>

#include "support/temp_dir.h"

using LineReaderTest = TempDirTest;
using namespace std::string_literals;

static std::vector<std::string> readPieces(const std::string &text, std::size_t pieceMax) {
    writeFile("text", text);
    std::vector<std::string> pieces;
    auto reader = openLines("text", pieceMax);
    for (std::string_view piece; readPiece(*reader, piece);)
        pieces.emplace_back(piece);
    return pieces;
}

TEST_F(LineReaderTest, LongLinesComeInPiecesAndEveryByteSurvives) {
    EXPECT_EQ(readPieces("abcdefgh\n\n12345678\nx\0y\nend"s, 8),
              (std::vector{"abcdefgh"s, "\n"s, "\n"s, "12345678"s, "\n"s, "x\0y\n"s, "end"s}));
    std::vector<std::string> lines; // beyond a block, which they do not fill evenly
    std::string text;
    for (std::size_t n = 0; n < 4000; n++)
        text += lines.emplace_back(std::string(n % 1023, 'a') + "\n");
    EXPECT_TRUE(readPieces(text, 1023) == lines);
    EXPECT_FALSE(openLines(".", 100));
    EXPECT_FALSE(openLines("missing", 100));
}
