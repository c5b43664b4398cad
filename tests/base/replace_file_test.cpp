#include "base/replace_file.h"

#include <sys/acl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <sstream>

#include "base/file_attributes.h"
#include "support/temp_dir.h"

namespace fs = std::filesystem;
using ReplaceFileTest = TempDirTest;

// Replaces the file at the path by a new one, whose name `intruder` takes meanwhile.
static Replaced replace(const fs::path &path, const char *intruder = nullptr) {
    const auto place = openPlace(path);
    const FilePlace newPlace = besidePlace(*place, ".new");
    File file = createNewFile(newPlace);
    writeText(file.get(), "new text");
    if (intruder)
        fs::rename(intruder, newPlace.path);
    return replaceFile(std::move(file), newPlace, *place, openForReading(*place).get());
}

// False where the file system has no access control lists.
static bool setList(const char *path, const char *text, acl_type_t type = ACL_TYPE_ACCESS) {
    acl_t list = acl_from_text(text);
    const bool set = acl_set_file(path, type, list) == 0;
    acl_free(list);
    return set;
}

// Bits, owner, group and extended attributes, one of which is the list.
static std::string shownAttributes(const std::string &path) {
    struct stat status = {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    std::ostringstream shown;
    shown << std::oct << (status.st_mode & 07777) << ' ' << status.st_uid << ' ' << status.st_gid;
    for (const char *name : {"system.posix_acl_access", "user.note"}) {
        std::string value(256, '\0');
        getxattr(path.c_str(), name, value.data(), value.size());
        shown << ' ' << value;
    }
    return shown.str();
}

TEST_F(ReplaceFileTest, ARegularFileGivesItsAttributesToTheNewOne) {
    const mode_t usual = umask(077);
    writeFile("old", "old text");
    const bool lists = setList("old", "u::rw,u:7:rw,g::r,m::rw,o::-");
    setxattr("old", "user.note", "mine", 4, 0);
    EXPECT_EQ(chown("old", geteuid() ? geteuid() : 1, getegid() ? getegid() : 2), 0);
    const std::string before = shownAttributes("old");
    EXPECT_EQ(replace("old"), Replaced::Yes);
    EXPECT_EQ(readFile("old"), "new text");
    EXPECT_EQ(shownAttributes("old"), before) << "access control lists: " << lists;
    const auto bitsOfNew = [](const char *path) {
        EXPECT_EQ(replace(path), Replaced::Yes);
        return shownAttributes(path).substr(0, 4);
    };
    chmod("old", 07654); // set-id and sticky bits are not kept
    EXPECT_EQ(bitsOfNew("old"), "654 ");
    EXPECT_EQ(bitsOfNew("fresh"), "644 ");
    chmod("old", 0640);
    fs::create_symlink("old", "link"); // what could not be read behind it stays hidden
    EXPECT_EQ(bitsOfNew("link"), "640 ");
    EXPECT_FALSE(fs::is_symlink("link"));
    umask(usual);
}

TEST_F(ReplaceFileTest, WhatSomebodyHasPutThereIsNeitherMovedNorRemoved) {
    writeFile("old", "old text");
    writeFile("intruder", "intruder");
    EXPECT_EQ(replace("old", "intruder"), Replaced::No);
    EXPECT_EQ(readFile("old") + readFile("old.new"), "old textintruder");
    ASSERT_EQ(mkfifo("fifo", 0600), 0); // to open it would block for ever
    EXPECT_EQ(replace("fifo"), Replaced::No);
    EXPECT_TRUE(fs::is_fifo("fifo"));
    EXPECT_FALSE(fs::exists("fifo.new"));
}

// What the folder gives to its new files, a group and a list, is no reason to show what was hidden.
TEST_F(ReplaceFileTest, TheFolderGivesNobodyMoreThanTheOldFileDid) {
    fs::create_directory("folder");
    if (geteuid() != 0 ||
        !setList("folder", "u::rwx,u:7:rwx,g::r-x,m::rwx,o::r-x", ACL_TYPE_DEFAULT) ||
        chown("folder", 7, 7) != 0 || chmod("folder", 02755) != 0)
        GTEST_SKIP() << "another user's folder takes root and access control lists";
    writeFile("secret", "");
    chmod("secret", 0640);
    const std::string hidden = shownAttributes("secret");
    fs::create_symlink("../secret", "folder/link");
    EXPECT_EQ(replace("folder/link"), Replaced::Yes);
    EXPECT_EQ(shownAttributes("folder/link"), hidden);
    fs::rename("secret", "folder/old");
    EXPECT_EQ(replace("folder/old"), Replaced::Yes);
    EXPECT_EQ(shownAttributes("folder/old"), hidden);
}

TEST_F(ReplaceFileTest, WhereTheListCannotBeKeptTheGroupGetsNoMore) {
    writeFile("old", "");
    const int to = memfd_create("new", MFD_HUGETLB); // takes no list
    if (to < 0 || !setList("old", "u::rw,u:7:rw,g::-,m::rw,o::r"))
        GTEST_SKIP() << "no access control lists, or only files that take one";
    EXPECT_TRUE(copyAttributes(fileno(openForReading("old").get()), to));
    EXPECT_EQ(shownAttributes("/proc/self/fd/" + std::to_string(to)).substr(0, 4), "644 ");
}
