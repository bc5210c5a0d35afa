#include "deletion/secure_delete.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/api/libraries.h"
#include "platform/api/memory.h"
#include "platform/library_function.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

// Why no folder that is closed to others can be made, or no file be moved there; with any other error it
// could.
bool IsNoPlaceToCount(DWORD error) {
    return error == ERROR_ACCESS_DENIED || error == ERROR_NOT_SUPPORTED || error == ERROR_NOT_SAME_DEVICE ||
           error == ERROR_WRITE_PROTECT;
}

enum class Outcome { kDone, kStopped, kFailed };

using SizeFunction = BOOL(WINAPI*)(HANDLE, PLARGE_INTEGER);

SizeFunction FindSizeFunction(const SecureDeleteHost& host) {
    const auto found = FindFunction<SizeFunction>(host.systemLibrary.get(), "GetFileSizeEx");
    if (found == nullptr) ShowFatalLastErrorBox(host.Window());
    return found;
}

// One file on its way from being opened to being deleted.
class FileDeletion {
  public:
    FileDeletion(SecureDeleteHost& user, const FilePlace& where, const std::string& fileName)
        : host(user), place(where), name(fileName), readSize(FindSizeFunction(user)) {}

    bool Run(const EntryIdentity* identity) {
        host.BeginDeleting(name);
        Outcome outcome = OverwriteAll(identity);
        if (outcome == Outcome::kDone) outcome = Remove();
        if (outcome == Outcome::kDone)
            host.Deleted(name);
        else if (isSecluded)
            GiveBack();
        return outcome != Outcome::kFailed;
    }

  private:
    Outcome FailWith(DeletionStep step, DWORD error) {
        host.Failed({step, name, error});
        return Outcome::kFailed;
    }

    // The contents and all streams. The contents are opened first, so that a file that someone else uses
    // stays whole, and overwritten last. What is asked is asked of the file that is held then.
    Outcome OverwriteAll(const EntryIdentity* identity) {
        if (const DWORD error = place.folder.BytesPerSector(sectorBytes); error != ERROR_SUCCESS)
            return FailWith(DeletionStep::kAskVolume, error);
        UniqueHandle file;
        DWORD error = place.folder.HoldFile(name, held);
        if (error == ERROR_SUCCESS && identity != nullptr) {
            if (const DWORD problem = held.Verify(*identity); problem != ERROR_SUCCESS)
                return FailWith(DeletionStep::kCompare, problem);
        }
        if (error == ERROR_SUCCESS) error = held.OpenForOverwriting(file);
        if (error != ERROR_SUCCESS) return FailWith(DeletionStep::kOpenFile, error);
        if (const Outcome outcome = Scrutinize(); outcome != Outcome::kDone) return outcome;
        std::vector<std::string> streams;
        error = held.ListNamedStreams(streams);
        if (error != ERROR_SUCCESS) return FailWith(DeletionStep::kOpenFile, error);
        for (const std::string& stream : streams) {
            const Outcome outcome = OverwriteStream(stream);
            if (outcome != Outcome::kDone) return outcome;
        }
        return OverwriteAndClose(std::move(file));
    }

    Outcome Scrutinize() {
        std::vector<OverwriteObstacle> obstacles;
        Outcome outcome = Outcome::kDone;
        switch (host.Scrutiny()) {
            case FileScrutiny::kNone:
                break;
            case FileScrutiny::kOpeners:
                if (!held.KnowsOpeners()) obstacles.push_back(OverwriteObstacle::kOpenersUnknown);
                break;
            case FileScrutiny::kObstacles:
                outcome = FindObstacles(obstacles);
                // A count of one name alone may have been made the moment after another one vanished.
                if (outcome == Outcome::kDone && obstacles.empty()) outcome = CountSecluded(obstacles);
                break;
        }
        if (outcome != Outcome::kDone || obstacles.empty()) return outcome;
        return host.MayOverwrite(name, obstacles) ? Outcome::kDone : Outcome::kFailed;
    }

    Outcome FindObstacles(std::vector<OverwriteObstacle>& obstacles) {
        const DWORD error = held.FindObstacles(obstacles);
        if (HasLostItsName(error)) return FailWith(DeletionStep::kCompare, error);
        return error == ERROR_SUCCESS ? Outcome::kDone : FailWith(DeletionStep::kExamine, error);
    }

    static bool HasLostItsName(DWORD error) {
        return error == ERROR_FILE_INVALID || error == ERROR_FILE_NOT_FOUND;
    }

    Outcome CountSecluded(std::vector<OverwriteObstacle>& obstacles) {
        const DWORD error = host.seclusion.Take(held, place);
        if (HasLostItsName(error)) return FailWith(DeletionStep::kCompare, error);
        if (error != ERROR_SUCCESS && !IsNoPlaceToCount(error))
            return FailWith(DeletionStep::kSeclude, error);
        isSecluded = error == ERROR_SUCCESS;
        bool hasSeveralNames = false;
        if (!isSecluded)
            obstacles.push_back(OverwriteObstacle::kNamesUnknown);
        else if (const DWORD problem = held.HasSeveralNames(hasSeveralNames); problem != ERROR_SUCCESS)
            return FailWith(DeletionStep::kExamine, problem);
        if (hasSeveralNames) obstacles.push_back(OverwriteObstacle::kSeveralNames);
        return Outcome::kDone;
    }

    Outcome OverwriteStream(const std::string& stream) {
        UniqueHandle opened;
        const DWORD error = held.OpenStreamForOverwriting(stream, opened);
        if (error != ERROR_SUCCESS) return FailWith(DeletionStep::kOpenFile, error);
        return OverwriteAndClose(std::move(opened));
    }

    Outcome OverwriteAndClose(UniqueHandle file) {
        const Outcome outcome = Overwrite(file.get());
        if (CloseHandle(file.release()) == FALSE)
            ShowFatalErrorBox(host.Window(), "Error: cannot close file");
        return outcome;
    }

    Outcome Overwrite(HANDLE file) {
        LARGE_INTEGER size{};
        if (readSize(file, &size) == FALSE) return FailWith(DeletionStep::kGetSize, GetLastError());
        const UniqueLocal<void> zeros(LocalAlloc(LMEM_FIXED, sectorBytes));
        if (!zeros) return FailWith(DeletionStep::kAllocate, GetLastError());
        std::memset(zeros.get(), 0, sectorBytes);
        const Outcome outcome = WriteZeros(file, zeros.get(), size.QuadPart);
        if (outcome == Outcome::kStopped) FlushFileBuffers(file);
        if (outcome != Outcome::kDone) return outcome;
        if (FlushFileBuffers(file) == FALSE) return FailWith(DeletionStep::kFlush, GetLastError());
        return Outcome::kDone;
    }

    // Into all that has a place on the disk, a sector at a time.
    Outcome WriteZeros(HANDLE file, const void* zeros, LONGLONG size) {
        LONGLONG next = 0;  // where the next sector would be written
        for (FileRange range; range.end < size;) {
            if (host.stopRequested) return Outcome::kStopped;
            const LONGLONG from = range.end;
            if (const DWORD error = FindAllocated(file, from, range); error != ERROR_SUCCESS)
                return FailWith(DeletionStep::kGetSize, error);
            // It has got another size since it was opened: somebody else writes it.
            if (range.end <= from) return FailWith(DeletionStep::kGetSize, ERROR_SHARING_VIOLATION);
            const LONGLONG begin = std::max(range.begin - range.begin % sectorBytes, next);
            if (range.begin == range.end || begin >= range.end) continue;
            if (begin != next && !Seek(file, begin)) return FailWith(DeletionStep::kWrite, GetLastError());
            for (next = begin; next < range.end; next = SectorAfter(next)) {
                if (host.stopRequested) return Outcome::kStopped;
                DWORD written = 0;
                if (WriteFile(file, zeros, sectorBytes, &written, nullptr) == FALSE)
                    return FailWith(DeletionStep::kWrite, GetLastError());
            }
        }
        // What was gathered before a hole at the end is still a matter of writing.
        if (next > 0 && next < size && !Seek(file, size))
            return FailWith(DeletionStep::kWrite, GetLastError());
        return Outcome::kDone;
    }

    // A file can end where no whole sector follows any more.
    LONGLONG SectorAfter(LONGLONG sector) const {
        return sector + std::min<LONGLONG>(sectorBytes, std::numeric_limits<LONGLONG>::max() - sector);
    }

    static bool Seek(HANDLE file, LONGLONG place) {
        LARGE_INTEGER distance{};
        distance.QuadPart = place;
        return SetFilePointerEx(file, distance, nullptr, FILE_BEGIN) != FALSE;
    }

    Outcome Remove() {
        const DWORD error = held.Remove();
        return error == ERROR_SUCCESS ? Outcome::kDone : FailWith(DeletionStep::kDeleteFile, error);
    }

    void GiveBack() {
        DeletionFailure failure{DeletionStep::kGiveBack, name};
        failure.error = host.seclusion.GiveBack(held, failure.leftIn);
        if (failure.error != ERROR_SUCCESS) host.Failed(failure);
    }

    SecureDeleteHost& host;
    const FilePlace& place;
    const std::string& name;
    SizeFunction readSize;
    FileHandle held;
    bool isSecluded = false;
    DWORD sectorBytes = 0;
};

using Removal = DWORD (FolderHandle::*)(const std::string&) const;

// What has no contents of its own, or none any more.
void Remove(SecureDeleteHost& host, const FolderHandle& folder, const std::string& name, Removal removal,
            DeletionStep step) {
    host.BeginDeleting(name);
    if (const DWORD error = (folder.*removal)(name); error != ERROR_SUCCESS)
        host.Failed({step, name, error});
    else
        host.Deleted(name);
}

void RemoveLink(SecureDeleteHost& host, const FolderHandle& folder, const std::string& name) {
    Remove(host, folder, name, &FolderHandle::RemoveLink, DeletionStep::kDeleteFile);
}

class FolderDeletion {
  public:
    FolderDeletion(SecureDeleteHost& user, const FolderHandle& place) : host(user), top(place) {}

    void Run(const DeletionItem& item) {
        Enter(item.name, &item.identity);
        while (!open.empty()) {
            FolderEntry entry;
            const DWORD error = open.back().folder.NextEntry(entry);
            // From here the folders above are closed and stay.
            if (host.stopRequested) return;
            if (error == ERROR_SUCCESS)
                Delete(entry);
            else
                Leave(error);
        }
    }

  private:
    struct OpenFolder {
        FolderHandle folder;
        std::string name;
    };

    const FolderHandle& Current() const { return open.empty() ? top : open.back().folder; }

    void Delete(const FolderEntry& entry) {
        // It was made in the folder that is being listed.
        if (host.seclusion.StandsIn(open.size(), entry.name)) return;
        host.BeginEntry(entry.name);
        switch (entry.kind) {
            case FolderEntryKind::kFolder:
                Enter(entry.name, nullptr);
                break;
            case FolderEntryKind::kFile:
                SecureDeleteFile(host, {top, Current(), open.size()}, entry.name, nullptr);
                break;
            case FolderEntryKind::kOther:
                RemoveLink(host, Current(), entry.name);
                break;
        }
    }

    // `identity`, which may be null, is of the folder that is meant.
    void Enter(const std::string& name, const EntryIdentity* identity) {
        FolderHandle entered;
        DeletionFailure failure{DeletionStep::kEnterFolder, name};
        failure.error = Current().OpenFolder(name, entered);
        if (failure.error == ERROR_SUCCESS && identity != nullptr) {
            failure.step = DeletionStep::kCompare;
            failure.error = entered.VerifyItself(*identity);
        }
        if (failure.error != ERROR_SUCCESS) {
            host.Failed(failure);
        } else {
            open.push_back({std::move(entered), name});
            host.EnterFolder(name);
        }
    }

    // `end` is what its listing ended with. Closed before it is removed.
    void Leave(DWORD end) {
        host.seclusion.Leave(open.size());
        const std::string name = std::move(open.back().name);
        open.pop_back();
        host.LeaveFolder();
        if (end == ERROR_NO_MORE_FILES)
            Remove(host, Current(), name, &FolderHandle::RemoveFolder, DeletionStep::kRemoveFolder);
        else
            host.Failed({DeletionStep::kListFolder, name, end});
    }

    SecureDeleteHost& host;
    const FolderHandle& top;
    std::vector<OpenFolder> open;  // from the folder to be deleted down to the current one
};

}  // namespace

SecureDeleteHost::SecureDeleteHost(const std::atomic<bool>& stop)
    : stopRequested(stop), systemLibrary(LoadLibraryA("kernel32.dll")) {
    if (!systemLibrary) ShowFatalLastErrorBox(nullptr);
}

void SecureDeleteItem(SecureDeleteHost& host, const FolderHandle& folder, const DeletionItem& item) {
    if (item.error != ERROR_SUCCESS) {
        host.Failed({DeletionStep::kExamine, item.name, item.error});
        return;
    }
    switch (item.kind) {
        case FolderEntryKind::kFolder:
            SecureDeleteFolder(host, folder, item);
            break;
        case FolderEntryKind::kFile:
            SecureDeleteFile(host, {folder, folder, 0}, item.name, &item.identity);
            break;
        case FolderEntryKind::kOther:
            if (const DWORD error = folder.VerifyEntry(item.name, item.identity); error != ERROR_SUCCESS)
                host.Failed({DeletionStep::kCompare, item.name, error});
            else
                RemoveLink(host, folder, item.name);
            break;
    }
}

bool SecureDeleteFile(SecureDeleteHost& host, const FilePlace& place, const std::string& name,
                      const EntryIdentity* identity) {
    return FileDeletion(host, place, name).Run(identity);
}

void SecureDeleteFolder(SecureDeleteHost& host, const FolderHandle& folder, const DeletionItem& item) {
    FolderDeletion(host, folder).Run(item);
}

}  // namespace permora
