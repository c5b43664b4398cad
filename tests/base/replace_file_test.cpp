#include "base/replace_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <tuple>

#include "support/temp_dir.h"

namespace fs = std::filesystem;
using ReplaceFileTest = TempDirTest;

TEST_F(ReplaceFileTest, KeepsOwnerAndPermissionsOfTheOldFileAcrossFileSystemsToo) {
    std::string elsewhere = "/dev/shm/scrconf-test-XXXXXX";
    const char *const folders[] = {".", mkdtemp(elsewhere.data())};
    for (const char *folder : folders) {
        if (!folder)
            GTEST_SKIP() << "no second file system";
        const fs::path old = fs::path(folder) / "old";
        writeFile("new", "new text");
        writeFile(old, "old text");
        ASSERT_EQ(chown(old.c_str(), geteuid() ? geteuid() : 1, getegid() ? getegid() : 2), 0);
        chmod(old.c_str(), 0640);
        struct stat before = {}, after = {};
        stat(old.c_str(), &before);
        EXPECT_EQ(replaceFile("new", old), Replaced::Yes);
        stat(old.c_str(), &after);
        EXPECT_EQ(readFile(old), "new text");
        EXPECT_EQ(std::tuple(after.st_uid, after.st_gid, after.st_mode),
                  std::tuple(before.st_uid, before.st_gid, before.st_mode));
        EXPECT_FALSE(fs::exists("new"));
    }
    fs::remove_all(elsewhere);
}

TEST_F(ReplaceFileTest, WithoutAnOldFileTheNewOneIsReadableWhateverTheUmask) {
    const mode_t usual = umask(077);
    writeFile("target", "not ours");
    fs::create_symlink("target", "link");
    for (const char *path : {"fresh", "link"}) {
        writeFile("new", "new text");
        EXPECT_EQ(replaceFile("new", path), Replaced::Yes) << path;
        EXPECT_EQ(fs::symlink_status(path).permissions(), fs::perms(0644)) << path;
    }
    umask(usual);
}

TEST_F(ReplaceFileTest, AFailureLeavesBothFiles) {
    writeFile("new", "new text");
    fs::create_directory("folder");
    ASSERT_EQ(mkfifo("fifo", 0600), 0);
    for (const char *path : {"folder", "fifo", "missing/old"}) {
        EXPECT_EQ(replaceFile("new", path), Replaced::No) << path;
        EXPECT_EQ(readFile("new"), "new text") << path;
    }
    EXPECT_TRUE(fs::is_directory("folder"));
    EXPECT_TRUE(fs::is_fifo("fifo"));
}
