// SetListsBelow and SetOwnersBelow with the system's own calls. An open search keeps its folder and those
// above it from being renamed, so the paths of the walk stay true while it is below them.
#include <cstring>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/passed_over.h"
#include "platform/windows/code_page.h"
#include "platform/windows/folder_entry.h"
#include "platform/windows/held_object_inside.h"

namespace permora {
namespace {

struct FindCloser {
    void operator()(void* search) const { FindClose(search); }
};
using UniqueSearch = std::unique_ptr<void, FindCloser>;

// A folder that is being listed, always one entry ahead.
struct OpenFolder {
    UniqueSearch search;
    std::size_t pathLength;  // of the folder, with the separator after it
    bool hasNext;
    WIN32_FIND_DATAA next;
};

// Changes the object at a path. The system's calls take a writable text.
using Change = std::function<DWORD(std::string& path)>;

enum class Links {
    kPassOver,  // the change would work on what they lead to
    kChange,    // it works on the link itself
};

class TreeWalk {
  public:
    TreeWalk(Change work, Links rule, TreeObserver& listener, TreeCounts& totals)
        : change(std::move(work)), links(rule), observer(listener), counts(totals) {}

    DWORD Run(LPCSTR folder) {
        const DWORD attributes = GetFileAttributesA(folder);
        if (attributes == INVALID_FILE_ATTRIBUTES) return GetLastError();
        if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) return ERROR_CANT_RESOLVE_FILENAME;
        if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) return ERROR_DIRECTORY;
        path = folder;
        const DWORD error = Enter();
        below = path.size();
        if (error != ERROR_SUCCESS) return error;
        while (!open.empty()) {
            path.resize(open.back().pathLength);
            if (!open.back().hasNext) {
                open.pop_back();
                continue;
            }
            const WIN32_FIND_DATAA entry = open.back().next;
            Advance(open.back());
            if (std::strcmp(entry.cFileName, ".") == 0 || std::strcmp(entry.cFileName, "..") == 0) continue;
            if (!observer.Begin(entry.cFileName)) {
                result = ERROR_OPERATION_ABORTED;
                break;
            }
            path += entry.cFileName;
            Visit(entry);
        }
        passedOver.Tell(observer);
        return result;
    }

  private:
    // Begins to list the folder at `path`.
    DWORD Enter() {
        if (path.back() != '\\' && path.back() != '/') path += '\\';
        OpenFolder folder{nullptr, path.size(), true, {}};
        HANDLE search = FindFirstFileA((path + '*').c_str(), &folder.next);
        if (search == INVALID_HANDLE_VALUE) return GetLastError();
        folder.search.reset(search);
        open.push_back(std::move(folder));
        return ERROR_SUCCESS;
    }

    void Advance(OpenFolder& folder) {
        folder.hasNext = FindNextFileA(folder.search.get(), &folder.next) != FALSE;
        if (folder.hasNext || GetLastError() == ERROR_NO_MORE_FILES) return;
        if (open.size() == 1)
            result = GetLastError();
        else
            PassOver(GetLastError());
    }

    void Visit(const WIN32_FIND_DATAA& entry) {
        const bool isLink = (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
        const bool isRefused = isLink && links == Links::kPassOver;
        const DWORD error = isRefused ? DWORD{ERROR_CANT_RESOLVE_FILENAME} : change(path);
        if (error == ERROR_SUCCESS)
            ++counts.changed;
        else
            PassOver(error);
        if (isLink || (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) return;
        const DWORD listingError = Enter();
        if (listingError != ERROR_SUCCESS) PassOver(listingError);
    }

    void PassOver(DWORD error) {
        // The object has vanished.
        if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return;
        ++counts.passedOver;
        passedOver.Add(path.substr(below), error);
    }

    Change change;
    Links links;
    TreeObserver& observer;
    TreeCounts& counts;
    PassedOverObjects passedOver;
    DWORD result = ERROR_SUCCESS;
    std::string path;              // of the current object
    std::size_t below = 0;         // where in it the part below the walked folder begins
    std::vector<OpenFolder> open;  // from the walked folder down to the current one
};

// Whether the object's list could be read.
DWORD ReadList(std::string& path) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const DWORD error = GetNamedSecurityInfoA(path.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION,
                                              nullptr, nullptr, nullptr, nullptr, &descriptor);
    const UniqueLocal<void> owned(descriptor);
    return error;
}

// By a handle: the call that takes a name would set the owner of the target of a link.
DWORD WriteOwnerAt(const std::string& path, PSID owner, LinkedFiles linked) {
    HANDLE handle =
        CreateFileA(path.c_str(), WRITE_OWNER | FILE_READ_ATTRIBUTES,
                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                    FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return GetLastError();
    const UniqueHandle object(handle);
    BY_HANDLE_FILE_INFORMATION info{};
    if (GetFileInformationByHandle(handle, &info) == FALSE) return GetLastError();
    const bool isFolder = (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (linked == LinkedFiles::kPassOver && !isFolder && info.nNumberOfLinks > 1) return kHasFurtherNames;
    return SetSecurityInfo(handle, SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, owner, nullptr, nullptr,
                           nullptr);
}

// The present path of a folder. The walk uses this path, and its first search keeps the folder and those
// above it from being renamed.
DWORD PathOf(HANDLE folder, std::string& path) {
    std::wstring wide;
    const DWORD error = FinalPathOf(folder, wide);
    return error == ERROR_SUCCESS ? ToAnsi(wide, path) : error;
}

}  // namespace

DWORD HeldObject::SetListsBelow(PACL list, TreeListMode mode, TreeObserver& observer,
                                TreeCounts& counts) const {
    if (list == nullptr || IsValidAcl(list) == FALSE) return ERROR_INVALID_ACL;
    const auto writeList = [list](std::string& path) {
        return SetNamedSecurityInfoA(path.data(), SE_FILE_OBJECT,
                                     DACL_SECURITY_INFORMATION | UNPROTECTED_DACL_SECURITY_INFORMATION,
                                     nullptr, nullptr, list, nullptr);
    };
    std::string path;
    if (const DWORD error = PathOf(inside->object.get(), path); error != ERROR_SUCCESS) return error;
    const Change change = mode == TreeListMode::kWrite ? Change(writeList) : Change(ReadList);
    return TreeWalk(change, Links::kPassOver, observer, counts).Run(path.c_str());
}

DWORD HeldObject::SetOwnersBelow(PSID owner, LinkedFiles linked, TreeObserver& observer,
                                 TreeCounts& counts) const {
    if (IsValidSid(owner) == FALSE) return ERROR_INVALID_SID;
    std::string path;
    if (const DWORD error = PathOf(inside->object.get(), path); error != ERROR_SUCCESS) return error;
    const auto writeOwner = [owner, linked](const std::string& object) {
        return WriteOwnerAt(object, owner, linked);
    };
    return TreeWalk(writeOwner, Links::kChange, observer, counts).Run(path.c_str());
}

}  // namespace permora
