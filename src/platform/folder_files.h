// Work on what is in a folder that is held open: a service of our own beside the system's.
//
// The system's calls take paths, and every path is resolved anew. A program that destroys files in
// folders that others can write must not do that: a folder that was swapped for a link between two calls
// would lead the second one into another tree. Here a folder is opened once, and everything in it is reached
// by its bare name through that handle. The current directory stays what it is, but for MakeCurrent.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/api/base.h"
#include "platform/resources.h"

namespace permora {

class HeldObject;
class RememberedObject;

enum class FolderEntryKind {
    kFile,
    kFolder,
    kOther,  // what has no contents of its own: a link to a file or folder, a device, a pipe
};

struct FolderEntry {
    std::string name;
    FolderEntryKind kind = FolderEntryKind::kFile;
};

// Why zeros that are written into a file may not replace its contents on the disk.
enum class OverwriteObstacle {
    kSeveralNames,       // further hard links: they stay, and lead to the overwritten contents
    kCopyOnWriteVolume,  // the file system writes to a fresh place and keeps the old one
    kOtherServer,        // another machine writes it, nobody here knows how
    kCompressed,
    kEncrypted,
    kSparse,
    kNamedStreams,  // the driver of the volume moves named streams when it writes them
    kJournaled,     // the file system writes the contents by way of its journal, where they stay for a while
    kNamesUnknown,  // a name may have vanished at the moment of the count (secluded_folder.h)
    kOpenersUnknown,  // another program may have it open: FileHandle::KnowsOpeners
};

// Bytes of a file from `begin` to before `end`.
struct FileRange {
    LONGLONG begin = 0;
    LONGLONG end = 0;
};

// The first bytes at or after `from` that may have a place on the disk, of contents that were opened for
// overwriting. Holes have none: zeros written there would only fill the disk, and a file that is nothing but
// a hole can be larger than it. What is set aside for the file has one, although it reads as zeros: older
// contents of the file may stand there. An empty range: nothing is there up to its end, from which the search
// goes on until it has come to the file's end.
DWORD FindAllocated(HANDLE contents, LONGLONG from, FileRange& range);

// A file that is held, whatever becomes of its name: every call is about the file that was found when it was
// held. All calls answer with 0 or a system error code, and a failed one leaves its outputs untouched. One
// thread at a time.
class FileHandle {
  public:
    FileHandle();
    FileHandle(FileHandle&& other) noexcept;
    FileHandle& operator=(FileHandle&& other) noexcept;
    ~FileHandle();

    // The contents, to be overwritten with WriteFile from their beginning and closed by the caller. Nobody
    // else may have them open, nor open them until they are closed (ERROR_SHARING_VIOLATION); on Linux this
    // is the kernel's write lease, and where there is none a lock among those who ask for locks
    // (KnowsOpeners). Read-only files are refused (ERROR_ACCESS_DENIED), also to root.
    DWORD OpenForOverwriting(UniqueHandle& contents) const;
    // Whether it is known that nobody else had the file open when it was opened for overwriting: the kernel
    // has no lease for files of another user's (but for root) and on some file systems.
    bool KnowsOpeners() const;

    // The streams beside the contents, as names for OpenStreamForOverwriting. Only NTFS has any.
    DWORD ListNamedStreams(std::vector<std::string>& streams) const;
    // As OpenForOverwriting.
    DWORD OpenStreamForOverwriting(const std::string& stream, UniqueHandle& contents) const;

    // What is known to keep the file from being overwritten in place; `obstacles` is empty when nothing is.
    // Some is known only when the contents have been opened for overwriting.
    DWORD FindObstacles(std::vector<OverwriteObstacle>& obstacles) const;

    // OverwriteObstacle::kSeveralNames alone.
    DWORD HasSeveralNames(bool& answer) const;

    // Removes the name by which it was reached; nothing of the file may be open any more. ERROR_FILE_INVALID,
    // and nothing is removed, when the name leads to another file by now.
    DWORD Remove() const;

  private:
    friend class FolderHandle;
    friend class RememberedObject;
    friend class SecludedFolder;
    struct Inside;
    std::unique_ptr<Inside> inside;  // null: no file
};

// Names are 8-bit texts in the ANSI code page, bare: no separators, neither "." nor "..". All calls answer
// with 0 or a system error code; failed ones leave outputs untouched. HoldObject, OpenPath and MakeCurrent
// apart, one thread at a time.
class FolderHandle {
  public:
    FolderHandle();
    FolderHandle(FolderHandle&& other) noexcept;
    FolderHandle& operator=(FolderHandle&& other) noexcept;
    ~FolderHandle();

    // The folder that a path of files.h leads to ("." is the current directory). Links on the way are
    // followed; the last component is not when it is a link (ERROR_CANT_RESOLVE_FILENAME), unless a separator
    // comes after it. A file is refused (ERROR_DIRECTORY). Where the folder may be entered but not listed,
    // only NextEntry fails, with ERROR_ACCESS_DENIED.
    static DWORD Open(const std::string& path, FolderHandle& folder);
    // The same with this folder in the place of the current directory; an empty path opens this folder again.
    DWORD OpenPath(const std::string& path, FolderHandle& folder) const;
    // Makes the folder the current directory, whatever it is called by now.
    DWORD MakeCurrent() const;

    // A folder in this one, to be listed: never through a link (ERROR_CANT_RESOLVE_FILENAME or
    // ERROR_DIRECTORY), and never what is mounted there (ERROR_NOT_SAME_DEVICE). On Linux each open folder
    // takes a descriptor, and the limit on them is raised as far as it may.
    DWORD OpenFolder(const std::string& name, FolderHandle& folder) const;

    // The next entry in the order of the file system, "." and ".." left out. ERROR_NO_MORE_FILES at the end.
    // What is deleted or made meanwhile is listed or not.
    DWORD NextEntry(FolderEntry& entry);

    // Of the volume that holds the folder.
    DWORD BytesPerSector(DWORD& bytes) const;

    // Holds what stands below this folder at `path`, for its descriptor (held_object.h): a bare name, several
    // with backslashes between them, or nothing for the folder itself. Links on the way are
    // followed as the system does, the last name never. Nothing of the folder is needed afterwards.
    DWORD HoldObject(const std::string& path, HeldObject& object) const;

    // Holds a file, never through a link (ERROR_CANT_RESOLVE_FILENAME). The folder must outlive `file`.
    DWORD HoldFile(const std::string& name, FileHandle& file) const;

    // Removes a link or device itself. What has contents is refused (ERROR_ACCESS_DENIED; ERROR_NOT_SUPPORTED
    // when there is no means to reach them).
    DWORD RemoveLink(const std::string& name) const;
    // Removes an empty folder (ERROR_DIR_NOT_EMPTY). A read-only one is refused (ERROR_ACCESS_DENIED).
    DWORD RemoveFolder(const std::string& name) const;

  private:
    friend class RememberedObject;
    friend class SecludedFolder;
    struct Inside;
    std::unique_ptr<Inside> inside;  // null: no folder
};

}  // namespace permora
