#include "config/font_path.h"

#include "support/temp_dir.h"

namespace fs = std::filesystem;
using FontPathTest = TempDirTest;

TEST_F(FontPathTest, PreferredDirectoriesComeFirstAndEachOnce) {
    for (const char *name : {"Type1", "100dpi", "misc", "75dpi"})
        writeFile(fs::path("usr/X11R6/lib/X11/fonts") / name / "fonts.dir", "");
    writeFile("usr/openwin/lib/fonts/misc/fonts.dir", ""); // a second "misc" stays among the rest
    fs::create_directories("usr/lib");
    fs::create_directory_symlink("../X11R6/lib/X11", "usr/lib/X11");
    EXPECT_EQ(findFontPath(), "usr/lib/X11/fonts/misc,usr/lib/X11/fonts/75dpi,"
                              "usr/lib/X11/fonts/100dpi,usr/lib/X11/fonts/Type1,"
                              "usr/openwin/lib/fonts/misc");
    fs::create_directory("usr/lib/X11/fonts/pcf");
    fs::remove_all("usr/X11R6/lib/X11/fonts/Type1");
    writeFile("usr/lib/X11/fonts/fonts.dir", ""); // found first through the candidate below it
    EXPECT_TRUE(findFontPath()->ends_with(",usr/lib/X11/fonts/pcf/..,usr/openwin/lib/fonts/misc"));
}
