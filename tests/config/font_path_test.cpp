#include "config/font_path.h"

#include "support/temp_dir.h"

namespace fs = std::filesystem;
using FontPathTest = TempDirTest;

TEST_F(FontPathTest, PreferredDirectoriesComeFirstAndEachOnce) {
    for (const char *name : {"X11R6/lib/X11/fonts/Type1", "X11R6/lib/X11/fonts/100dpi",
                             "X11R6/lib/X11/fonts/misc", "X11R6/lib/X11/fonts/75dpi",
                             "openwin/lib/fonts/misc"}) // a second "misc" stays among the rest
        writeFile(fs::path("usr") / name / "fonts.dir", "");
    fs::create_directory("usr/lib");
    fs::create_directory_symlink("../X11R6/lib/X11", "usr/lib/X11");
    const std::string dir = "usr/lib/X11/fonts/", second = "usr/openwin/lib/fonts/misc";
    EXPECT_EQ(findFontPath(),
              dir + "misc," + dir + "75dpi," + dir + "100dpi," + dir + "Type1," + second);
    fs::create_directory("usr/lib/X11/fonts/pcf");
    fs::remove_all("usr/X11R6/lib/X11/fonts/Type1");
    writeFile("usr/lib/X11/fonts/fonts.dir", ""); // found first through the candidate below it
    EXPECT_TRUE(findFontPath()->ends_with("," + dir + "pcf/..," + second));
}
