// Reading the security of a tree in order, with several threads that read ahead of the caller.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>

#include "platform/tree_reading.h"

namespace permora {

// A folder of a tree that its caller goes through name by name. For a caller who takes the names in their
// order, each folder's contents right after itself, most is there already when it is asked for; any other
// order is as right and not as fast. All folders of a tree belong to one thread, the caller's.
//
// Threads: the reading begins on the caller's alone and uses more while they make it faster (ThreadTuner), or
// exactly `threads`. They take what comes next in the order of the tree: a folder, which is opened, read and
// listed, or names of other objects: some dozens, or fewer where each takes long. What nobody has begun when
// the caller comes to it, the caller reads itself; while it waits for what another thread has begun, it reads
// ahead too.
//
// Bounds: what was read ahead takes about a mebibyte, some 250 pieces and 64 open folders, whatever the tree
// looks like. Of the folders that the caller is in, at most 64 are open; higher ones are given up meanwhile
// (TreeFolder::Suspend). Beside that memory holds the names of one folder on each level.
class AheadFolder {
  public:
    AheadFolder();
    AheadFolder(AheadFolder&& other) noexcept;
    AheadFolder& operator=(AheadFolder&& other) noexcept;
    ~AheadFolder();  // those below it must have gone before, unless the whole reading ends

    explicit operator bool() const { return inside != nullptr; }

    // As TreeFolder::ReadTop.
    static DWORD ReadTop(const HeldObject& top, SECURITY_INFORMATION parts, TreeObject& object,
                         AheadFolder& folder, std::optional<std::size_t> threads = std::nullopt);

    // Finds the names; to be called once, before the others. 0 or the error after which names are missing.
    DWORD List();
    const FolderNames& Names() const;

    // As TreeFolder::Read, for the name with this index; to be called at most once for each.
    DWORD Read(std::size_t index, TreeObject& object, AheadFolder& below);

    // Whether it was moved elsewhere while it was given up, so that what was not read yet cannot be.
    bool IsLost() const;

    bool IgnoresCase() const;

  private:
    struct Inside;
    std::unique_ptr<Inside> inside;  // null: none
};

}  // namespace permora
