#include "base/file_attributes.h"

#include <sys/acl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <acl/libacl.h>
#include <attr/libattr.h>
#include <cerrno>
#include <memory>
#include <type_traits>

static constexpr mode_t ATTRIBUTES_MODE_BITS = S_IRWXU | S_IRWXG | S_IRWXO;

struct FreeAcl {
    void operator()(void *list) const { acl_free(list); }
};
using Acl = std::unique_ptr<std::remove_pointer_t<acl_t>, FreeAcl>;

// What the group may do besides everybody is gone: it may be another group now, and beside a list
// the group's bits are the most that anyone in the list may do.
static mode_t withoutGroup(mode_t mode) {
    const mode_t everybody = (mode & S_IRWXO) << 3;
    return mode & (~static_cast<mode_t>(S_IRWXG) | everybody);
}

// A folder's default list has given the new file entries of its own; they would come to life with
// the group's bits.
bool setBits(int to, mode_t mode) {
    const Acl bits(acl_from_mode(mode));
    if (bits && acl_set_fd(to, bits.get()) != 0 && errno != ENOTSUP)
        return false;
    return fchmod(to, mode) == 0;
}

bool copyBits(int from, int to, mode_t most) {
    struct stat old = {};
    if (fstat(from, &old) != 0)
        return false;
    const mode_t mode = old.st_mode & most;
    return setBits(to, fchown(to, -1U, old.st_gid) == 0 ? mode : withoutGroup(mode));
}

bool copyAttributes(int from, int to) {
    struct stat old = {};
    if (fstat(from, &old) != 0)
        return false;
    const Acl list(acl_get_fd(from));
    const bool listUnknown = !list && errno != ENOTSUP;
    const bool listKept = list && acl_equiv_mode(list.get(), nullptr) > 0; // says more than bits do
    attr_copy_fd("", from, "", to, nullptr, nullptr);
    const bool groupKept =
        fchown(to, old.st_uid, old.st_gid) == 0 || fchown(to, -1U, old.st_gid) == 0;
    const mode_t mode = old.st_mode & ATTRIBUTES_MODE_BITS;
    if (!setBits(to, groupKept && !listKept && !listUnknown ? mode : withoutGroup(mode)))
        return false;
    if (groupKept && listKept)
        acl_set_fd(to, list.get()); // sets all bits anew; where it is not taken the ones above stay
    return true;
}
