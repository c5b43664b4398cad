#include "base/replace_file.h"

#include <sys/acl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>

#include "base/file_attributes.h"
#include "support/temp_dir.h"

namespace fs = std::filesystem;
using ReplaceFileTest = TempDirTest;

// Puts a new file in the place of the one at the path.
static Replaced replace(const fs::path &path) {
    const auto place = openPlace(path);
    const FilePlace newPlace = besidePlace(*place, ".new");
    File file = createNewFile(newPlace);
    writeText(file.get(), "new text");
    return replaceFile(std::move(file), newPlace, *place, openForReading(*place).get());
}

// What a file has besides its contents, as one line; the list as in the extended attribute.
static std::string shownAttributes(const char *path) {
    struct stat status = {};
    lstat(path, &status);
    char mode[16], list[256], note[16];
    std::snprintf(mode, sizeof mode, "%o", status.st_mode & 07777u);
    const ssize_t listSize = lgetxattr(path, "system.posix_acl_access", list, sizeof list);
    const ssize_t noteSize = lgetxattr(path, "user.note", note, sizeof note);
    return std::string(mode) + " " + std::to_string(status.st_uid) + " " +
           std::to_string(status.st_gid) + " " +
           std::string(note, static_cast<std::size_t>(std::max<ssize_t>(noteSize, 0))) + " " +
           std::string(list, static_cast<std::size_t>(std::max<ssize_t>(listSize, 0)));
}

TEST_F(ReplaceFileTest, TheNewFileHasTheAttributesOfTheOld) {
    const mode_t usual = umask(077);
    writeFile("old", "old text");
    acl_t list = acl_from_text("u::rw,u:7:rw,g::r,m::rw,o::-");
    const bool lists = acl_set_file("old", ACL_TYPE_ACCESS, list) == 0;
    acl_free(list);
    setxattr("old", "user.note", "mine", 4, 0);
    EXPECT_EQ(chown("old", geteuid() ? geteuid() : 1, getegid() ? getegid() : 2), 0);
    const std::string before = shownAttributes("old");
    EXPECT_EQ(replace("old"), Replaced::Yes);
    EXPECT_EQ(readFile("old"), "new text");
    EXPECT_EQ(shownAttributes("old"), before) << lists;
    chmod("old", 07654); // set-id and sticky bits are not kept
    EXPECT_EQ(replace("old"), Replaced::Yes);
    EXPECT_EQ(shownAttributes("old").substr(0, 4), "654 ");
    EXPECT_EQ(replace("fresh"), Replaced::Yes);
    EXPECT_EQ(shownAttributes("fresh").substr(0, 4), "644 ");
    chmod("old", 0640);
    fs::create_symlink("old", "link"); // what was read behind it was no one else's to read
    EXPECT_EQ(replace("link"), Replaced::Yes);
    EXPECT_EQ(shownAttributes("link").substr(0, 4), "640 ");
    umask(usual);
}

TEST_F(ReplaceFileTest, WhereTheListCannotBeKeptTheGroupGetsNoMore) {
    writeFile("old", "");
    acl_t list = acl_from_text("u::rw,u:7:rw,g::-,m::rw,o::r");
    const bool lists = acl_set_file("old", ACL_TYPE_ACCESS, list) == 0;
    acl_free(list);
    if (!lists)
        GTEST_SKIP() << "no access control lists";
    const int to = memfd_create("new", MFD_HUGETLB); // takes no list
    EXPECT_TRUE(copyAttributes(fileno(openForReading("old").get()), to));
    struct stat status = {};
    fstat(to, &status);
    EXPECT_EQ(status.st_mode & 0777, 0644u);
}

TEST_F(ReplaceFileTest, AFailureLeavesTheOldFileAlone) {
    fs::create_directory("folder");
    ASSERT_EQ(mkfifo("fifo", 0600), 0);
    for (const char *path : {"folder", "fifo"}) {
        EXPECT_EQ(replace(path), Replaced::No) << path;
        EXPECT_FALSE(fs::exists(path + std::string(".new"))) << path;
    }
    EXPECT_TRUE(fs::is_directory("folder"));
    EXPECT_TRUE(fs::is_fifo("fifo"));
}
