// Secure deletion: a file is overwritten with zeros, flushed and closed before it is deleted; a folder is
// emptied in this way, depth first, and then removed.
//
// Everything is found by its bare name in a folder that is held open, so nothing that is swapped meanwhile
// leads anywhere else. A link is removed itself; what it leads to is never opened. What is mounted in a
// folder is reported and stays, and so does the folder.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "deletion/seclusion.h"
#include "platform/folder_trail.h"
#include "platform/remembered_object.h"
#include "platform/resources.h"
#include "security/outcome.h"

namespace permora {

// The checks of a file before it is overwritten.
enum class FileScrutiny {
    kNone,
    kOpeners,    // whether nobody else has it open: OverwriteObstacle::kOpenersUnknown
    kObstacles,  // all that is known to keep its contents on the disk or under another name
};

// Whether a folder is deleted with all that is in it, or only when it is empty.
enum class DeletionExtent { kWhole, kEmptyFolder };

// The engine's interface to its user. The calls come on the engine's thread.
class SecureDeleteHost {
  public:
    // `stop` must outlive the host.
    explicit SecureDeleteHost(const std::atomic<bool>& stop);
    SecureDeleteHost(const SecureDeleteHost&) = delete;
    SecureDeleteHost& operator=(const SecureDeleteHost&) = delete;
    virtual ~SecureDeleteHost() = default;

    // Set from any thread; the run ends at its next stop point: before the next entry of a folder, before the
    // next sector, and before a folder is removed. A file that was being overwritten then stays, with zeros
    // from its beginning to the last sector written.
    const std::atomic<bool>& stopRequested;

    // An entry of a folder comes next.
    virtual void BeginEntry(const std::string& /*name*/) {}
    // Work on a file begins, or an emptied folder is about to be removed.
    virtual void BeginDeleting(const std::string& /*name*/) {}
    // The latest entry has been deleted.
    virtual void Deleted(const std::string& /*name*/) {}
    // So many further bytes of the contents of a file, its named streams aside, are overwritten, or have no
    // place on the disk.
    virtual void Overwritten(ULONGLONG /*bytes*/) {}
    // An object stays, named by its bare name, and the run continues with the next one. Without a name, no
    // object failed: a service of the system is missing, or a file cannot be closed.
    virtual void Failed(const Outcome& failure) = 0;
    // Called for every file.
    virtual FileScrutiny Scrutiny() const { return FileScrutiny::kOpeners; }
    // Whether the file may be overwritten all the same; `obstacles` are some. On false, the host has reported
    // why the file stays.
    virtual bool MayOverwrite(const std::string& name, const std::vector<OverwriteObstacle>& obstacles) = 0;

    // The folders that the engine has entered, from the one that is deleted as a whole on.
    FolderTrail trail;
    // Where names are counted, with FileScrutiny::kObstacles. The engine removes no folder that holds the
    // seclusion's. Whoever runs the engine ends the seclusion after the last item, and before an item in
    // another folder.
    Seclusion seclusion;

    const UniqueLibrary systemLibrary;  // with GetFileSizeEx
};

// Deletes a file or folder of an open folder, unless its name leads to another one than `object` by now.
void SecureDeleteItem(SecureDeleteHost& host, const FolderHandle& folder, const std::string& name,
                      const RememberedObject& object);
// Deletes a remembered object by its bare name in a folder.
void SecureDeleteItem(SecureDeleteHost& host, const RememberedObject& object);
// Deletes what could not be deleted before, by its path below the folder that it was remembered from. No link
// leads to it.
void SecureDeleteAgain(SecureDeleteHost& host, const RememberedObject& object, DeletionExtent extent);

}  // namespace permora
