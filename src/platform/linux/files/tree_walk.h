// Visits every object below a folder, on as many threads as help, also while others change the tree.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/files/object_handle.h"
#include "platform/linux/files/walked_folder.h"

namespace permora::host {

enum class WalkDecision {
    kDescend,   // visit what is below this object, if it is a folder
    kPassOver,  // leave alone what is below it
    kStop,      // end the walk
};

// An object that a walk has come to. All of it lives for the call that it is handed to; a visitor that is not
// done by then may take over the handle of what is no folder, and copy `place`.
struct VisitedObject {
    ObjectHandle& object;
    const std::string& hostName;
    const FolderRef& place;  // the folder in which it stands
    int folder;              // which is open here

    std::string Path() const { return place->PathOf(hostName); }
};

// What a visitor needs on one thread: buffers, locks, counts.
class VisitingThread {
  public:
    virtual ~VisitingThread() = default;

    // One object, before all that is below it. `notes` may be given for a folder into which the walk is to
    // descend; they are Notes() of the `place` of what stands in it.
    virtual WalkDecision Visit(const VisitedObject& visited, std::unique_ptr<FolderNotes>& notes) = 0;
    // There is nothing to visit for now: what was put off is to be done, what was kept for long to be let go.
    // The end of a walk is told so too.
    virtual void Rest() {}
};

// All calls may come on any thread of the walk, one at a time, also those of destructors of VisitingThread;
// only their visits are at the same time.
class TreeVisitor {
  public:
    virtual ~TreeVisitor() = default;

    virtual std::unique_ptr<VisitingThread> NewThread() = 0;

    // Whether files are to be opened for reading where that is safe (OpenWithoutDevices), which pays for who
    // reads or writes their attributes. Scanners that look at every file that is opened look at these too.
    virtual bool WantsReadableFiles() const { return false; }

    // An object that was not visited (ERROR_NOT_SAME_DEVICE: something is mounted on it), or a folder that
    // was not listed to its end; the walk goes on with what is left. The path is shown and below the walked
    // folder; an empty one is that folder itself.
    virtual void Fail(DWORD error, const std::string& path) = 0;
};

// Walks by open handles. Links are visited and never followed. Mounted volumes and folders below are neither
// visited nor entered. A folder that is moved, or replaced by a link, during the walk leads nowhere else. An
// object that vanishes is no failure. Every name is visited once, a folder before its contents, and otherwise
// in no order; names that appear or move during the walk are visited or not, as for any listing.
//
// Threads: the walk begins on the caller's alone and uses more while they make it faster (ThreadTuner), or
// exactly `threads`. An idle thread takes the next name of the highest folder that is known to have more than
// one left, whichever thread opened it, and goes down from there. So one folder of a million files occupies
// all threads, like a million folders with one file. A walk that is stopped begins no more visits; visits
// that have begun end.
//
// Each thread needs at most 64 open folders of 8 KiB. Higher ones are closed meanwhile and found again
// (ClosedFolder): in a view without devices wherever they are by then, as if they had stayed open, and
// elsewhere as the parent of the folder below, so that one that was moved away is reported with
// ERROR_FILE_INVALID and not listed further. Each level of folders above the current ones has a record of
// some 200 bytes and the notes; the number of objects costs no memory. Linux 5.6 or newer.
void WalkTree(const ObjectHandle& folder, std::unique_ptr<FolderNotes> notes, TreeVisitor& visitor,
              std::optional<std::size_t> threads = std::nullopt);

}  // namespace permora::host
