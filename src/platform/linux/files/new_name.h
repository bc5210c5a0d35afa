// Giving an object a name that nothing else has.
#pragma once

namespace permora::host {

enum class RenamedKind { kFolder, kOther };

// Renames the entry `hostName` of an open folder to `newName` in another one of the same volume, only when
// nothing has that name. 0 or an errno value: EEXIST when something has, ESTALE when another object got the
// name `hostName` meanwhile.
//
// Where the driver has no such renaming (ntfs-3g), a file is given the second name before it loses the first,
// or where there are no second names takes the place of an empty file that keeps the name; and a folder is
// renamed as usual, which could take the place of nothing but an empty folder.
int RenameToFreeName(int folder, const char* hostName, int newFolder, const char* newName, RenamedKind kind);

}  // namespace permora::host
