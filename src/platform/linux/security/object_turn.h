// The turn to change one object among the programs of one user that change objects through this layer.
//
// A descriptor is read, changed and written as a whole, so of two programs at work on one object at the same
// time the second would write away what the first had written. They take turns by locks on a file that only
// this user can open: on the objects themselves anyone who may read them could take a lock and keep it.
#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/linux/base/unique_fd.h"
#include "platform/linux/files/object_handle.h"

namespace permora::host {

// A file, opened; null where none can be had.
using LockFile = std::shared_ptr<const UniqueFd>;

// All of them, each opened when it is first asked for; on any thread. The kernel looks through all locks on a
// file for each new one, and a walk has one for each folder above it: so folders have many files, and what is
// no folder, or no object at all, has one.
class LockFiles {
  public:
    static constexpr std::size_t kForFolders = 256;

    LockFile Of(const ObjectHandle& object);
    LockFile OfKeys();

  private:
    LockFile OpenOnce(std::size_t number);

    std::mutex guard;
    std::array<std::optional<LockFile>, kForFolders + 1> files;
};

class ObjectTurn {
  public:
    // Opens a lock file for itself at each turn.
    ObjectTurn() = default;
    // By lock files that others use too: turns that share them never wait for one another.
    explicit ObjectTurn(std::shared_ptr<LockFiles> shared) : files(std::move(shared)) {}
    ObjectTurn(ObjectTurn&& other) noexcept
        : files(std::move(other.files)),
          file(std::move(other.file)),
          place(other.place),
          isTaken(std::exchange(other.isTaken, false)) {}
    ObjectTurn& operator=(ObjectTurn&& other) noexcept;
    ~ObjectTurn() { Leave(); }

    // Ends the turn that this has, and waits for one on `object`: ERROR_BUSY after ten seconds. Ends with
    // this, with Leave, and with the process. Where no lock file can be had there are no turns, and the
    // answer is 0. Turns of one process count like those of different ones; whoever has one and waits for
    // another must go down a tree.
    DWORD Take(const ObjectHandle& object);
    // The same for what is no file: `key` is its name.
    DWORD Take(std::string_view key);
    // As Take for an object, unless somebody else has it; false then, and at once.
    bool TryTake(const ObjectHandle& object);
    void Leave();

    // Whether Take has been answered with 0 since.
    explicit operator bool() const { return isTaken; }

  private:
    DWORD WaitUntilTaken();
    bool TryTakeAt(LockFile ofPlace, off_t objectPlace);

    std::shared_ptr<LockFiles> files;  // null: none are shared
    LockFile file;
    off_t place = 0;  // in it, of the object that the turn is about
    bool isTaken = false;
};

// The turns of one thread of a walk: on the objects that it is at, and on folders, which the walk keeps while
// it is below them. What is in a folder gets what the walk remembers of the folder, so nobody else may change
// the folder meanwhile.
class WalkTurns {
  public:
    // All threads of a walk share the lock files for folders, each of which is met once. A file with several
    // names may be met by two of them at a time, which then take turns like strangers.
    explicit WalkTurns(std::shared_ptr<LockFiles> sharedForFolders)
        : foldersFiles(std::move(sharedForFolders)) {}

    // False when somebody else has the turn; at once.
    bool TryTake(const ObjectHandle& object);
    // Ends all turns that are not kept, and waits as ObjectTurn::Take does.
    DWORD Take(const ObjectHandle& object);
    // The turn on the object, which is a folder that the walk enters.
    ObjectTurn Keep() { return std::move(onFolder); }
    // Ends the turn on an object that is a folder. Those on files are ended together, which takes half the
    // calls: when they are many, or before anything is waited for.
    void Leave() { onFolder.Leave(); }
    // Ends all that are not kept.
    void LeaveAll();
    // Whether further ones would cost more time than ending them one by one: the kernel looks through all of
    // them for each new one.
    bool AreMany() const { return filesHeld >= 8; }

  private:
    bool TryTakeFile(off_t place);

    const std::shared_ptr<LockFiles> foldersFiles;
    ObjectTurn onFolder;
    LockFile filesFile;  // opened at the first turn
    bool isOpened = false;
    int filesHeld = 0;
};

}  // namespace permora::host
