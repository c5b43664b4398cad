#include "frame/replace_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <tuple>

#include "support/temp_dir.h"

namespace fs = std::filesystem;

struct ReplaceFileTest : TempDirTest {
    void SetUp() override { writeFile("new", "new text"); }
    static int modeOf(const char *path) {
        struct stat status = {};
        return lstat(path, &status) == 0 ? static_cast<int>(status.st_mode & 07777) : -1;
    }
};

TEST_F(ReplaceFileTest, KeepsOwnerAndPermissionsOfTheOldFile) {
    writeFile("old", "old text");
    ASSERT_EQ(chown("old", geteuid() ? geteuid() : 1, getegid() ? getegid() : 2), 0);
    chmod("old", 0640);
    struct stat before = {}, after = {};
    stat("old", &before);
    EXPECT_EQ(replaceFile("new", "old"), Replaced::Yes);
    stat("old", &after);
    EXPECT_EQ(readFile("old"), "new text");
    EXPECT_EQ(std::tuple(after.st_uid, after.st_gid, after.st_mode),
              std::tuple(before.st_uid, before.st_gid, before.st_mode));
    EXPECT_FALSE(fs::exists("new"));
}

TEST_F(ReplaceFileTest, ANewFileIsReadableWhateverTheUmask) {
    const mode_t usual = umask(077);
    chmod("new", 0600);
    EXPECT_EQ(replaceFile("new", "fresh"), Replaced::Yes);
    umask(usual);
    EXPECT_EQ(modeOf("fresh"), 0644);
}

TEST_F(ReplaceFileTest, ALinkIsReplacedAndItsTargetLeftAlone) {
    writeFile("target", "not ours");
    chmod("target", 0600);
    fs::create_symlink("target", "link");
    EXPECT_EQ(replaceFile("new", "link"), Replaced::Yes);
    EXPECT_EQ(readFile("target"), "not ours");
    EXPECT_FALSE(fs::is_symlink("link"));
    EXPECT_EQ(readFile("link"), "new text");
    EXPECT_EQ(modeOf("link"), 0644);
}

TEST_F(ReplaceFileTest, AFailureLeavesBothFiles) {
    fs::create_directory("folder");
    ASSERT_EQ(mkfifo("fifo", 0600), 0);
    for (const char *path : {"folder", "fifo", "missing/old"}) {
        EXPECT_EQ(replaceFile("new", path), Replaced::No) << path;
        EXPECT_EQ(readFile("new"), "new text") << path;
    }
    EXPECT_TRUE(fs::is_directory("folder"));
    EXPECT_TRUE(fs::is_fifo("fifo"));
}

TEST_F(ReplaceFileTest, CrossesFileSystemsByACopyBesideTheOldFile) {
    std::string elsewhere = "/dev/shm/scrconf-test-XXXXXX";
    if (!mkdtemp(elsewhere.data()))
        GTEST_SKIP() << "no second file system";
    const fs::path old = fs::path(elsewhere) / "old";
    writeFile(old, "old text");
    chmod(old.c_str(), 0604);
    EXPECT_EQ(replaceFile("new", old), Replaced::Yes);
    EXPECT_EQ(readFile(old), "new text");
    EXPECT_EQ(modeOf(old.c_str()), 0604);
    EXPECT_EQ(std::distance(fs::directory_iterator(elsewhere), {}), 1);
    EXPECT_FALSE(fs::exists("new"));
    fs::remove_all(elsewhere);
}
