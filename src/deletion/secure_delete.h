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

#include "deletion/deletion_failure.h"
#include "deletion/deletion_items.h"
#include "deletion/seclusion.h"
#include "platform/folder_files.h"
#include "platform/resources.h"

namespace permora {

// What is found out about a file before it is overwritten.
enum class FileScrutiny {
    kNone,
    kOpeners,    // whether nobody else has it open: OverwriteObstacle::kOpenersUnknown
    kObstacles,  // all that is known to keep its contents on the disk or under another name
};

// What the engine needs of who runs it. The calls come on the engine's thread.
class SecureDeleteHost {
  public:
    // `stop` must outlive the host. Loads the system library of GetFileSizeEx; without it the process ends
    // after its box.
    explicit SecureDeleteHost(const std::atomic<bool>& stop);
    SecureDeleteHost(const SecureDeleteHost&) = delete;
    SecureDeleteHost& operator=(const SecureDeleteHost&) = delete;
    virtual ~SecureDeleteHost() = default;

    // Set from any thread; the run ends at its next stop point: before the next entry of a folder, before the
    // next sector, and before a folder is removed. A file that was being overwritten then stays, with zeros
    // from its beginning to the last sector written.
    const std::atomic<bool>& stopRequested;

    // The window that owns message boxes; may be null.
    virtual HWND Window() const { return nullptr; }
    // An entry of a folder comes next.
    virtual void BeginEntry(const std::string& /*name*/) {}
    // The entries of this folder come next, until it is left.
    virtual void EnterFolder(const std::string& /*name*/) {}
    virtual void LeaveFolder() {}
    // Work on a file begins, or an emptied folder is about to be removed.
    virtual void BeginDeleting(const std::string& /*name*/) {}
    // What was begun last is gone.
    virtual void Deleted(const std::string& /*name*/) {}
    // Something stays where it is; the run goes on with what comes next.
    virtual void Failed(const DeletionFailure& failure) = 0;
    // Asked for every file.
    virtual FileScrutiny Scrutiny() const { return FileScrutiny::kOpeners; }
    // Whether the file may be overwritten all the same; `obstacles` are some. False: the host has told why it
    // stays.
    virtual bool MayOverwrite(const std::string& name, const std::vector<OverwriteObstacle>& obstacles) = 0;

    // Where names are counted, with FileScrutiny::kObstacles. The engine ends it in no folder that it
    // removes; who runs the engine ends it after the last item, and before one in another folder.
    Seclusion seclusion;

    const UniqueLibrary systemLibrary;
};

// Deletes a file or folder of an open folder, unless its name leads to another one by now.
void SecureDeleteItem(SecureDeleteHost& host, const FolderHandle& folder, const DeletionItem& item);

// Overwrites and deletes a file with all its streams; `identity`, which may be null, is the one that is
// meant. True when it is gone or the run was stopped in the middle of it, false after a failure that was
// told.
bool SecureDeleteFile(SecureDeleteHost& host, const FilePlace& place, const std::string& name,
                      const EntryIdentity* identity);

// Deletes everything in a folder, and the folder when nothing stayed in it. Depth costs memory and, on Linux,
// an open descriptor for each level, but no stack.
void SecureDeleteFolder(SecureDeleteHost& host, const FolderHandle& folder, const DeletionItem& item);

}  // namespace permora
