// Where files stand while their names are counted: a service of our own beside the system's.
//
// The number of a file's names is only certain where none of them can vanish at the moment of the count. Who
// may link a file of someone else's into a folder of his own, and unlinks it there again and again, makes it
// look like a file with one name. So the name by which a file was reached is taken to where nobody else
// comes, and the names are counted then.
#pragma once

#include <memory>
#include <string>

#include "platform/folder_files.h"

namespace permora {

// A folder that only this process's user can enter (on Linux root can, too), named ".permora-shred-" and 16
// hexadecimal digits, by which that of a process that was killed is found. All calls answer with 0 or a
// system error code. One thread at a time.
//
// There is none where none is needed, and files stay where they are: on Windows nobody can remove a name of a
// file that is open for this process alone; and where a volume knows no owners (ntfs-3g as it is usually
// mounted, FAT), whoever can reach a file may overwrite it anyway.
class SecludedFolder {
  public:
    SecludedFolder();
    SecludedFolder(SecludedFolder&& other) noexcept;
    SecludedFolder& operator=(SecludedFolder&& other) noexcept;
    ~SecludedFolder();  // leaves the folder

    explicit operator bool() const { return inside != nullptr; }
    const std::string& Name() const;
    // Whether somebody has removed it: who may write in the place may remove an empty folder there.
    bool IsGone() const;

    // Makes one in `place`, of which nothing is needed afterwards. ERROR_NOT_SUPPORTED when others could
    // enter what is made there.
    static DWORD Make(const FolderHandle& place, SecludedFolder& made);
    // Removes it. ERROR_DIR_NOT_EMPTY when something stays in it; ERROR_FILE_INVALID, and nothing is removed,
    // when its name leads to something else by now.
    DWORD Remove();

    // Takes a file in that is open for overwriting. From then on FileHandle::HasSeveralNames counts
    // for certain. ERROR_FILE_INVALID when its name leads to another one by now, ERROR_NOT_SAME_DEVICE when
    // files cannot come here from where it is; after any failure the file stays where it was. It must be
    // given back or removed before this folder goes.
    DWORD Take(FileHandle& file) const;
    // Brings it back to where it was. ERROR_ALREADY_EXISTS when something else has its name there by now;
    // then it stays in this folder.
    DWORD GiveBack(FileHandle& file) const;

  private:
    struct Inside;
    std::unique_ptr<Inside> inside;
};

}  // namespace permora
