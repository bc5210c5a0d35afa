// Who shows the file operations of this process: how far one has come, and what it has to ask
// (platform/presenters.h).
#pragma once

#include <string>

#include "platform/api/base.h"
#include "platform/api/time.h"
#include "platform/presenters.h"

namespace permora {

enum class FileOperationKind { kCopy, kMove, kRename, kDelete };

// Where an operation stands. Paths are those of platform/api/files.h. An item is a file, a folder or a link.
struct FileOperationProgress {
    FileOperationKind kind = FileOperationKind::kCopy;
    std::string name;        // of the item in work, bare
    std::string fromFolder;  // that holds it
    std::string toFolder;    // that takes it; empty for a deletion
    ULONGLONG bytesDone = 0;
    ULONGLONG bytesTotal = 0;
    ULONGLONG itemsDone = 0;
    ULONGLONG itemsTotal = 0;
    bool isTotalKnown = false;  // false: everything is still being counted, and the totals grow
};

enum class FileOperationQuestionKind {
    // Whether `itemCount` items, of which `source` is the first, shall go to the trash. Yes, cancel.
    kTrash,
    // Whether `source`, with all that is in it, shall be deleted for good: its volume has no trash that could
    // take it, or something is mounted in it. Yes or no, each for all, cancel.
    kDeleteForGood,
    // Whether `source` shall take the place of the file `target`. Yes or no, each for all, cancel.
    kReplaceFile,
    // Whether what is in the folder `source` shall be put into the folder `target`, which has the same name.
    // Files are asked about one by one. Yes or no, each for all, cancel.
    kMergeFolders,
    // Whether `source`, which is read-only or the system's, shall be moved, renamed, deleted or replaced all
    // the same. Yes or no, each for all, cancel.
    kProtectedItem,
    // Whether `source` shall be copied without some of its attributes or named streams, which the volume of
    // `target` cannot hold: `error` says why. Yes or no, each for all, cancel.
    kPropertyLoss,
    // `source` could not be worked on: `error` says why. Retry when `mayRetry` is set, no (pass it over), no
    // for all, cancel.
    kFailure,
    // The folder `source` would be copied or moved into itself, by way of `target`. No (pass it over),
    // cancel.
    kFolderIntoItself,
};

struct FileOperationObject {
    std::string path;  // empty: not told
    bool isFolder = false;
    ULONGLONG size = 0;  // in bytes; 0 for a folder
    FILETIME lastWrite{};
};

struct FileOperationQuestion {
    FileOperationQuestionKind kind = FileOperationQuestionKind::kFailure;
    FileOperationKind operation = FileOperationKind::kCopy;
    FileOperationObject source = {};
    FileOperationObject target = {};
    DWORD error = 0;       // of kFailure and kPropertyLoss
    bool mayRetry = true;  // of kFailure
    DWORD itemCount = 0;   // of kTrash
};

// An answer "for all" holds for the further questions of that kind in the operation; the failures of one
// error code are a kind. An answer that a question does not offer counts as no.
enum class FileOperationAnswer { kYes, kYesToAll, kNo, kNoToAll, kRetry, kCancel };

// Serves an operation while it runs, on the thread that runs it.
class FileOperationHost {
  public:
    virtual ~FileOperationHost() = default;
    // Called some twenty times a second at most, also in the middle of large files. False: the operation is
    // cancelled, and ends with what is done already.
    virtual bool Report(const FileOperationProgress& progress) = 0;
    virtual FileOperationAnswer Ask(const FileOperationQuestion& question) = 0;
};

class FileOperationJob {
  public:
    virtual ~FileOperationJob() = default;
    // Does the whole work. To be called once, on any thread.
    virtual void Run(FileOperationHost& host) = 0;
};

class FileOperationPresenter {
  public:
    virtual ~FileOperationPresenter() = default;
    // Runs the job, which is borrowed, and returns after its end. `title` is that of the window.
    virtual void Present(HWND owner, const std::string& title, FileOperationJob& job) = 0;
};

}  // namespace permora
