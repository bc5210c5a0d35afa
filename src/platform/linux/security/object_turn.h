// The turn to change one object among the programs of one user that change objects through this layer.
//
// A descriptor is read, changed and written as a whole, so of two programs at work on one object at the same
// time the second would write away what the first had written. They take turns by locks on a file that only
// this user can open: on the objects themselves anyone who may read them could take a lock and keep it.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <vector>

#include "platform/linux/base/unique_fd.h"
#include "platform/linux/files/object_handle.h"

namespace permora::host {

class ObjectTurn {
  public:
    ObjectTurn() = default;
    ObjectTurn(ObjectTurn&&) = default;
    ObjectTurn& operator=(ObjectTurn&&) = default;

    // Ends the turn that this has, and waits for one on `object`: ERROR_BUSY after ten seconds. Ends with
    // this, with Leave, and with the process. Where no lock file can be had there are no turns, and the
    // answer is 0. Turns of one process count like those of different ones; whoever has one and waits for
    // another must go down a tree.
    DWORD Take(const ObjectHandle& object);
    void Leave();

    // Whether Take has been answered with 0 since.
    explicit operator bool() const { return isTaken; }

  private:
    UniqueFd file;          // opened at the first turn
    bool isOpened = false;  // or at least tried
    off_t place = 0;        // in it, of the object that the turn is about
    bool isTaken = false;
};

// The turns of a walk: on the object that it is at, and on the folders that this stands in. What is in a
// folder gets what the walk remembers of the folder, so nobody else may change the folder meanwhile. One open
// file for all of them.
class WalkTurns {
  public:
    // The walk has come to `object` at `depth` (platform/linux/files/tree_walk.h): ends the turns on what it
    // has left, and waits as ObjectTurn::Take does.
    DWORD Take(const ObjectHandle& object, std::size_t depth);
    // The object is a folder that the walk enters: keeps the turn on it until the walk is back at its depth.
    void Keep();
    // Ends the turn on the object, unless it is kept.
    void Leave();

  private:
    void LeaveTo(std::size_t depth);

    UniqueFd file;  // opened at the first turn
    bool isOpened = false;
    std::optional<off_t> current;
    std::vector<std::optional<off_t>> kept;  // by depth: of the folders above
};

}  // namespace permora::host
