// What a file has besides its contents: owner, group, permission bits, access control list and
// extended attributes.
#pragma once

// Gives the file open as `to`, which its owner alone may use so far, what the one open as `from`
// has. Set-id and sticky bits are not kept. Who may not give files away stays the owner; where the
// group or the access control list cannot be kept, the group may do no more than before. Extended
// attributes that the file system does not take are left out. False, with the reason in errno, when
// the permission bits cannot be set.
bool copyAttributes(int from, int to);
