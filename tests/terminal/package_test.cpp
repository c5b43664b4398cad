// The Debian package: it installs, the installed program runs, and a purge takes nothing that is
// the administrator's.
#include <unistd.h>

#include "support/terminal.h"

namespace fs = std::filesystem;

static constexpr const char *BUILD_PACKAGE =
    "cpack -G DEB -B package --config '" SCRCONF_BUILD_DIR "/CPackConfig.cmake' >package.log 2>&1";
static constexpr const char *CHECK_PACKAGE =
    "! command -v lintian >/dev/null || "
    "lintian --allow-root --fail-on error package/*.deb >package.log 2>&1";
static constexpr const char *INSTALL_PACKAGE =
    "rm -r root/usr/sbin root/usr/lib/X11 root/etc/X11 && mkdir -p root/var/lib/dpkg/updates &&"
    "mkdir root/var/lib/dpkg/info && touch root/var/lib/dpkg/status && "
    "dpkg --root=root --force-depends --install package/*.deb >package.log 2>&1";
static constexpr const char *PURGE_PACKAGE = "dpkg --root=root --purge scrconf >package.log 2>&1";

struct PackageTest : TerminalTest {
    static void perform(const char *command) {
        ASSERT_EQ(std::system(command), 0) << command << "\n" << readFile("package.log");
    }
};

TEST_F(PackageTest, IsInstalledUsedAndPurged) {
    if (geteuid() != 0 || std::system("command -v dpkg dpkg-shlibdeps >/dev/null") != 0)
        GTEST_SKIP() << "installing a package takes root, dpkg and dpkg-dev";
    perform(BUILD_PACKAGE);
    perform(CHECK_PACKAGE);
    perform(INSTALL_PACKAGE);
    for (const char *file : {"share/man/man8/scrconf.8.gz", "share/doc/scrconf/copyright",
                             "share/doc/scrconf/changelog.gz"})
        EXPECT_TRUE(fs::exists(fs::path("root/usr") / file)) << file;
    const RunResult list = run({"-lt"});
    EXPECT_EQ(list.errors, "");
    EXPECT_TRUE(list.output.starts_with("  1. ")) << list.output;

    writeFile(config, "LogFile /tmp/log\nDriver one\n");
    start();
    press("<Enter><Down><Down><Enter>"); // the information screen, "Save and Exit"
    EXPECT_EQ(exitStatus(), 0);
    const std::string saved = readFile(config);
    EXPECT_EQ(saved, "LogFile /tmp/log\n\n\n\nDriver one\n");
    perform(PURGE_PACKAGE);
    EXPECT_EQ(readFile(config), saved);
    EXPECT_FALSE(fs::exists("root/usr/sbin/scrconf"));
    EXPECT_FALSE(fs::exists(korvel));
}
