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
#include "platform/held_object.h"
#include "platform/library_function.h"

namespace permora {
namespace {

// The errors that mean that no folder can be closed to others, or no file be moved there.
bool IsNoPlaceToCount(DWORD error) {
    return error == ERROR_ACCESS_DENIED || error == ERROR_NOT_SUPPORTED || error == ERROR_NOT_SAME_DEVICE ||
           error == ERROR_WRITE_PROTECT;
}

using SizeFunction = BOOL(WINAPI*)(HANDLE, PLARGE_INTEGER);

// The run was stopped, or the host refused the file. An outcome of no step, which is not reported.
Outcome BrokenOff() {
    return {ERROR_OPERATION_ABORTED};
}

// One file, from opening to deletion.
class FileDeletion {
  public:
    FileDeletion(SecureDeleteHost& user, const FilePlace& where, const std::string& fileName)
        : host(user),
          place(where),
          name(fileName),
          readSize(FindFunction<SizeFunction>(user.systemLibrary.get(), "GetFileSizeEx")) {}

    // `expected` is the chosen file, or null.
    void Run(const RememberedObject* expected) {
        if (readSize == nullptr) return host.Failed({GetLastError(), Step::kLoadLibrary});
        host.BeginDeleting(name);
        Outcome outcome = OverwriteAll(expected);
        if (outcome.IsDone()) outcome = {held.Remove(), Step::kDeleteFile};
        if (outcome.IsDone()) return host.Deleted(name);
        Report(outcome);
        if (isSecluded) Report(host.seclusion.GiveBack(held));
    }

  private:
    void Report(Outcome outcome) {
        if (outcome.IsDone() || outcome.step == Step::kNone) return;
        if (outcome.step != Step::kCloseFile) outcome.object = name;
        host.Failed(outcome);
    }

    // The contents and all streams. The contents are opened first, so that a file in use stays unchanged, and
    // overwritten last. All checks are made on the file that is then held.
    Outcome OverwriteAll(const RememberedObject* expected) {
        if (const DWORD error = place.folder.BytesPerSector(sectorBytes); error != ERROR_SUCCESS)
            return {error, Step::kAskVolume};
        UniqueHandle file;
        DWORD error = place.folder.HoldFile(name, held);
        if (error == ERROR_SUCCESS && expected != nullptr)
            if (const DWORD problem = expected->Verify(held); problem != ERROR_SUCCESS)
                return {problem, Step::kCompare};
        if (error == ERROR_SUCCESS) error = held.OpenForOverwriting(file);
        if (error != ERROR_SUCCESS) return {error, Step::kOpenFile};
        std::vector<std::string> streams;
        Outcome outcome = Scrutinize();
        if (outcome.IsDone()) outcome = {held.ListNamedStreams(streams), Step::kOpenFile};
        for (const std::string& stream : streams)
            if (outcome.IsDone()) outcome = OverwriteStream(stream);
        isMain = true;
        return outcome.IsDone() ? OverwriteAndClose(std::move(file)) : outcome;
    }

    Outcome Scrutinize() {
        std::vector<OverwriteObstacle> obstacles;
        Outcome outcome;
        switch (host.Scrutiny()) {
            case FileScrutiny::kNone:
                break;
            case FileScrutiny::kOpeners:
                if (!held.KnowsOpeners()) obstacles.push_back(OverwriteObstacle::kOpenersUnknown);
                break;
            case FileScrutiny::kObstacles:
                outcome = OutcomeOfCount(held.FindObstacles(obstacles), Step::kExamine);
                // A count of one name may have been made just after another name vanished.
                if (outcome.IsDone() && obstacles.empty()) outcome = CountSecluded(obstacles);
                break;
        }
        const bool isRefused = outcome.IsDone() && !obstacles.empty() && !host.MayOverwrite(name, obstacles);
        return isRefused ? BrokenOff() : outcome;
    }

    // A file that has lost its name is not the chosen one.
    static Outcome OutcomeOfCount(DWORD error, Step step) {
        const bool isNameLost = error == ERROR_FILE_INVALID || error == ERROR_FILE_NOT_FOUND;
        return {error, isNameLost ? Step::kCompare : step};
    }

    Outcome CountSecluded(std::vector<OverwriteObstacle>& obstacles) {
        const DWORD error = host.seclusion.Take(held, place);
        if (IsNoPlaceToCount(error)) {
            obstacles.push_back(OverwriteObstacle::kNamesUnknown);
            return {};
        }
        if (error != ERROR_SUCCESS) return OutcomeOfCount(error, Step::kSeclude);
        isSecluded = true;
        bool hasSeveralNames = false;
        const DWORD problem = held.HasSeveralNames(hasSeveralNames);
        if (hasSeveralNames) obstacles.push_back(OverwriteObstacle::kSeveralNames);
        return {problem, Step::kExamine};
    }

    Outcome OverwriteStream(const std::string& stream) {
        UniqueHandle opened;
        const DWORD error = held.OpenStreamForOverwriting(stream, opened);
        return error == ERROR_SUCCESS ? OverwriteAndClose(std::move(opened))
                                      : Outcome{error, Step::kOpenFile};
    }

    Outcome OverwriteAndClose(UniqueHandle file) {
        Outcome outcome = Overwrite(file.get());
        return CloseHandle(file.release()) != FALSE ? outcome : LastError(Step::kCloseFile);
    }

    static Outcome LastError(Step step) { return {GetLastError(), step}; }

    Outcome Overwrite(HANDLE file) {
        LARGE_INTEGER size{};
        if (readSize(file, &size) == FALSE) return LastError(Step::kGetSize);
        const UniqueLocal<void> zeros(LocalAlloc(LMEM_FIXED, sectorBytes));
        if (!zeros) return LastError(Step::kTakeZeros);
        std::memset(zeros.get(), 0, sectorBytes);
        Outcome outcome = WriteZeros(file, zeros.get(), size.QuadPart);
        if (!outcome.IsDone() && outcome.step != Step::kNone) return outcome;
        return FlushFileBuffers(file) == FALSE && outcome.IsDone() ? LastError(Step::kFlush) : outcome;
    }

    // Overwrites everything that has a place on the disk, a sector at a time.
    Outcome WriteZeros(HANDLE file, const void* zeros, LONGLONG size) {
        LONGLONG next = 0;  // where the next sector would be written
        LONGLONG reported = 0;
        const auto report = [&](LONGLONG end) {
            if (isMain) host.Overwritten(static_cast<ULONGLONG>(end - reported));
            reported = end;
        };
        for (FileRange range; range.end < size;) {
            if (host.stopRequested) return BrokenOff();
            const LONGLONG from = range.end;
            if (const DWORD error = FindAllocated(file, from, range); error != ERROR_SUCCESS)
                return {error, Step::kGetSize};
            // The size has changed since it was opened: another process writes to it.
            if (range.end <= from) return {ERROR_SHARING_VIOLATION, Step::kGetSize};
            const LONGLONG begin = std::max(range.begin - range.begin % sectorBytes, next);
            if (range.begin == range.end || begin >= range.end) continue;
            if (begin != next && !Seek(file, begin)) return LastError(Step::kWrite);
            for (next = begin; next < range.end; next = SectorAfter(next)) {
                if (host.stopRequested) return BrokenOff();
                DWORD written = 0;
                if (WriteFile(file, zeros, sectorBytes, &written, nullptr) == FALSE)
                    return LastError(Step::kWrite);
                report(std::min(SectorAfter(next), size));
            }
        }
        report(size);
        // Data gathered before a hole at the end must still be written.
        return next > 0 && next < size && !Seek(file, size) ? LastError(Step::kWrite) : Outcome();
    }

    // At the largest sizes, no whole sector follows.
    LONGLONG SectorAfter(LONGLONG sector) const {
        return sector + std::min<LONGLONG>(sectorBytes, std::numeric_limits<LONGLONG>::max() - sector);
    }

    static bool Seek(HANDLE file, LONGLONG place) {
        LARGE_INTEGER distance{};
        distance.QuadPart = place;
        return SetFilePointerEx(file, distance, nullptr, FILE_BEGIN) != FALSE;
    }

    SecureDeleteHost& host;
    const FilePlace& place;
    const std::string& name;
    SizeFunction readSize;
    FileHandle held;
    bool isSecluded = false;
    bool isMain = false;  // what is overwritten now: the contents, and no named stream
    DWORD sectorBytes = 0;
};

using Removal = DWORD (FolderHandle::*)(const std::string&) const;

// Removes an object without contents.
void Remove(SecureDeleteHost& host, const FolderHandle& folder, const std::string& name, Removal removal,
            Step step) {
    host.BeginDeleting(name);
    if (const DWORD error = (folder.*removal)(name); error != ERROR_SUCCESS)
        host.Failed({error, step, name});
    else
        host.Deleted(name);
}

void RemoveLink(SecureDeleteHost& host, const FolderHandle& folder, const std::string& name) {
    Remove(host, folder, name, &FolderHandle::RemoveLink, Step::kDeleteFile);
}

// Depth costs memory and, on Linux, an open descriptor for each level, but no stack.
class FolderDeletion {
  public:
    FolderDeletion(SecureDeleteHost& user, const FolderHandle& place) : host(user), top(place) {}

    // Deletes everything in a folder, then the folder if it is empty.
    void Run(const std::string& name, const RememberedObject& expected) {
        Enter(name, &expected);
        while (!open.empty()) {
            FolderEntry entry;
            const DWORD error = open.back().folder.NextEntry(entry);
            // The run ends: the folders above are closed and stay.
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
        // The secluded folder was made in the folder that is being listed.
        if (host.seclusion.StandsIn(open.size(), entry.name)) return;
        host.BeginEntry(entry.name);
        switch (entry.kind) {
            case FolderEntryKind::kFolder:
                Enter(entry.name, nullptr);
                break;
            case FolderEntryKind::kFile:
                FileDeletion(host, {top, Current(), open.size()}, entry.name).Run(nullptr);
                break;
            case FolderEntryKind::kOther:
                RemoveLink(host, Current(), entry.name);
                break;
        }
    }

    // `expected` is the chosen folder, or null.
    void Enter(const std::string& name, const RememberedObject* expected) {
        FolderHandle entered;
        Outcome outcome{Current().OpenFolder(name, entered), Step::kEnterFolder, name};
        if (outcome.IsDone() && expected != nullptr)
            outcome = {expected->Verify(entered), Step::kCompare, name};
        if (!outcome.IsDone()) return host.Failed(outcome);
        host.trail.Enter(name, open.size());
        open.push_back({std::move(entered), name});
    }

    // `end` is the result of its listing. The folder is closed before it is removed.
    void Leave(DWORD end) {
        host.seclusion.Leave(open.size());
        const std::string name = std::move(open.back().name);
        open.pop_back();
        host.trail.LeaveTo(open.size());
        if (end == ERROR_NO_MORE_FILES)
            Remove(host, Current(), name, &FolderHandle::RemoveFolder, Step::kRemoveFolder);
        else
            host.Failed({end, Step::kListFolder, name});
    }

    SecureDeleteHost& host;
    const FolderHandle& top;
    std::vector<OpenFolder> open;  // from the folder to be deleted down to the current one
};

DWORD VerifyName(const FolderHandle& folder, const std::string& name, const RememberedObject& object) {
    HeldObject found;
    const DWORD error = folder.HoldObject(name, found);
    return error == ERROR_SUCCESS ? object.Verify(found) : error;
}

// What has come into the folder since it was emptied is nothing that the user has chosen.
void RemoveEmptyFolder(SecureDeleteHost& host, const FolderHandle& folder, const std::string& name,
                       const RememberedObject& object) {
    if (const DWORD error = VerifyName(folder, name, object); error != ERROR_SUCCESS)
        host.Failed({error, Step::kCompare, name});
    else
        Remove(host, folder, name, &FolderHandle::RemoveFolder, Step::kRemoveFolder);
}

std::string LastName(const std::string& path) {
    return path.substr(path.rfind('\\') + 1);
}

}  // namespace

SecureDeleteHost::SecureDeleteHost(const std::atomic<bool>& stop)
    : stopRequested(stop), systemLibrary(LoadLibraryA("kernel32.dll")) {}

void SecureDeleteItem(SecureDeleteHost& host, const FolderHandle& folder, const std::string& name,
                      const RememberedObject& object) {
    host.trail = {};
    if (object.Error() != ERROR_SUCCESS) return host.Failed({object.Error(), Step::kExamine, name});
    switch (object.Kind()) {
        case FolderEntryKind::kFolder:
            FolderDeletion(host, folder).Run(name, object);
            break;
        case FolderEntryKind::kFile:
            FileDeletion(host, {folder, folder, 0}, name).Run(&object);
            break;
        case FolderEntryKind::kOther:
            if (const DWORD error = VerifyName(folder, name, object); error != ERROR_SUCCESS)
                host.Failed({error, Step::kCompare, name});
            else
                RemoveLink(host, folder, name);
            break;
    }
}

void SecureDeleteItem(SecureDeleteHost& host, const RememberedObject& object) {
    host.trail = {};
    // The root of a drive has no folder above it.
    if (!object.Start()) return host.Failed({ERROR_ACCESS_DENIED, Step::kExamine, object.Path()});
    SecureDeleteItem(host, *object.Start(), object.Path(), object);
}

void SecureDeleteAgain(SecureDeleteHost& host, const RememberedObject& object, DeletionExtent extent) {
    host.trail = {};
    if (!object.Start()) return host.Failed({ERROR_ACCESS_DENIED, Step::kExamine, object.Path()});
    std::string name = object.Path();
    FolderHandle opened;
    const FolderHandle* folder = object.Start().get();
    for (std::size_t separator = name.find('\\'); separator != name.npos; separator = name.find('\\')) {
        FolderHandle next;
        const DWORD error = folder->OpenFolder(name.substr(0, separator), next);
        name.erase(0, separator + 1);
        if (error != ERROR_SUCCESS) return host.Failed({error, Step::kExamine, LastName(name)});
        opened = std::move(next);
        folder = &opened;
    }
    if (extent == DeletionExtent::kEmptyFolder)
        RemoveEmptyFolder(host, *folder, name, object);
    else
        SecureDeleteItem(host, *folder, name, object);
}

}  // namespace permora
