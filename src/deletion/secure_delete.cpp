#include "deletion/secure_delete.h"

#include <cstring>
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
    FileDeletion(SecureDeleteHost& user, const FolderHandle& place, const std::string& fileName)
        : host(user), folder(place), name(fileName), readSize(FindSizeFunction(user)) {}

    bool Run() {
        host.BeginDeleting(name);
        const Outcome outcome = OverwriteAll();
        if (outcome != Outcome::kDone) return outcome == Outcome::kStopped;
        if (const DWORD error = folder.RemoveFile(name, held); error != ERROR_SUCCESS)
            return Fail(DeletionStep::kDeleteFile, error);
        host.Deleted(name);
        return true;
    }

  private:
    bool Fail(DeletionStep step, DWORD error) {
        host.Failed({step, name, error});
        return false;
    }
    Outcome FailWith(DeletionStep step, DWORD error) {
        Fail(step, error);
        return Outcome::kFailed;
    }

    // The contents and all streams. The contents are opened first, so that a file that someone else uses
    // stays whole, and overwritten last. What is asked is asked of the file that is held then.
    Outcome OverwriteAll() {
        if (const DWORD error = folder.BytesPerSector(sectorBytes); error != ERROR_SUCCESS)
            return FailWith(DeletionStep::kAskVolume, error);
        UniqueHandle file;
        std::vector<std::string> streams;
        DWORD error = folder.HoldFile(name, held);
        if (error == ERROR_SUCCESS) error = held.OpenForOverwriting(file);
        if (error != ERROR_SUCCESS) return FailWith(DeletionStep::kOpenFile, error);
        if (!host.MayOverwrite(held, name)) return Outcome::kFailed;
        error = held.ListNamedStreams(streams);
        if (error != ERROR_SUCCESS) return FailWith(DeletionStep::kOpenFile, error);
        for (const std::string& stream : streams) {
            const Outcome outcome = OverwriteStream(stream);
            if (outcome != Outcome::kDone) return outcome;
        }
        return OverwriteAndClose(std::move(file));
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
        for (LONGLONG remaining = size.QuadPart; remaining > 0; remaining -= sectorBytes) {
            if (host.stopRequested) {
                FlushFileBuffers(file);
                return Outcome::kStopped;
            }
            DWORD written = 0;
            if (WriteFile(file, zeros.get(), sectorBytes, &written, nullptr) == FALSE)
                return FailWith(DeletionStep::kWrite, GetLastError());
        }
        if (FlushFileBuffers(file) == FALSE) return FailWith(DeletionStep::kFlush, GetLastError());
        return Outcome::kDone;
    }

    SecureDeleteHost& host;
    const FolderHandle& folder;
    const std::string& name;
    SizeFunction readSize;
    FileHandle held;
    DWORD sectorBytes = 0;
};

using Removal = DWORD (FolderHandle::*)(const std::string&) const;

// What has no contents of its own, or none any more.
void Remove(SecureDeleteHost& host, const FolderHandle& folder, const std::string& name, Removal removal,
            DeletionStep step) {
    host.BeginDeleting(name);
    if (const DWORD error = (folder.*removal)(name); error != ERROR_SUCCESS) {
        host.Failed({step, name, error});
    } else {
        host.Deleted(name);
    }
}

void DeleteFileOrLink(SecureDeleteHost& host, const FolderHandle& folder, const FolderEntry& entry) {
    if (entry.kind == FolderEntryKind::kFile) {
        SecureDeleteFile(host, folder, entry.name);
    } else {
        Remove(host, folder, entry.name, &FolderHandle::RemoveLink, DeletionStep::kDeleteFile);
    }
}

class FolderDeletion {
  public:
    FolderDeletion(SecureDeleteHost& user, const FolderHandle& place) : host(user), top(place) {}

    void Run(const std::string& name) {
        Enter(name);
        while (!open.empty()) {
            FolderEntry entry;
            const DWORD error = open.back().folder.NextEntry(entry);
            // From here the folders above are closed and stay.
            if (host.stopRequested) return;
            if (error == ERROR_SUCCESS) {
                Delete(entry);
            } else {
                Leave(error);
            }
        }
    }

  private:
    struct OpenFolder {
        FolderHandle folder;
        std::string name;
    };

    const FolderHandle& Current() const { return open.empty() ? top : open.back().folder; }

    void Delete(const FolderEntry& entry) {
        host.BeginEntry(entry.name);
        if (entry.kind == FolderEntryKind::kFolder) {
            Enter(entry.name);
        } else {
            DeleteFileOrLink(host, Current(), entry);
        }
    }

    void Enter(const std::string& name) {
        FolderHandle entered;
        if (const DWORD error = Current().OpenFolder(name, entered); error != ERROR_SUCCESS) {
            host.Failed({DeletionStep::kEnterFolder, name, error});
        } else {
            open.push_back({std::move(entered), name});
            host.EnterFolder(name);
        }
    }

    // `end` is what its listing ended with. Closed before it is removed.
    void Leave(DWORD end) {
        const std::string name = std::move(open.back().name);
        open.pop_back();
        host.LeaveFolder();
        if (end == ERROR_NO_MORE_FILES) {
            Remove(host, Current(), name, &FolderHandle::RemoveFolder, DeletionStep::kRemoveFolder);
        } else {
            host.Failed({DeletionStep::kListFolder, name, end});
        }
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

void SecureDeleteItem(SecureDeleteHost& host, const FolderHandle& folder, const std::string& name) {
    FolderEntryKind kind{};
    if (const DWORD error = folder.KindOf(name, kind); error != ERROR_SUCCESS) {
        host.Failed({DeletionStep::kExamine, name, error});
    } else if (kind == FolderEntryKind::kFolder) {
        SecureDeleteFolder(host, folder, name);
    } else {
        DeleteFileOrLink(host, folder, {name, kind});
    }
}

bool SecureDeleteFile(SecureDeleteHost& host, const FolderHandle& folder, const std::string& name) {
    return FileDeletion(host, folder, name).Run();
}

void SecureDeleteFolder(SecureDeleteHost& host, const FolderHandle& folder, const std::string& name) {
    FolderDeletion(host, folder).Run(name);
}

}  // namespace permora
