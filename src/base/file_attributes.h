// What a file has besides its contents: owner, group, permission bits, access control list and
// extended attributes.
#pragma once

#include <sys/types.h>

// Gives the file open as `to`, which its owner alone may use so far, what the one open as `from`
// has. Set-id and sticky bits are not kept. Who may not give files away stays the owner; where the
// group or the access control list cannot be kept, the group may do no more than before. Extended
// attributes that the file system does not take are left out. False, with the reason in errno, when
// the permission bits cannot be set.
bool copyAttributes(int from, int to);

// Gives the file open as `to` the group and the permission bits of the one open as `from`, of these
// at most `most`; the owner stays, and of the folder's default access control list nothing does.
// The same rule for the group, the same errors.
bool copyBits(int from, int to, mode_t most);

// Gives the file open as `to` these permission bits and no access control list.
bool setBits(int to, mode_t mode);
