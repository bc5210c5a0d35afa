// Shared by FolderHandle and FileHandle on Windows: NtCreateFile opens relative to a handle, and never opens
// the target of a reparse point.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "platform/folder_files.h"
#include "platform/windows/folder_listing.h"

namespace permora {

inline constexpr ULONG kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

enum class LastLink { kItself, kFollow };

struct OpenRequest {
    ACCESS_MASK access;
    ULONG share = kShareAll;
    ULONG options = 0;
    LastLink lastLink = LastLink::kItself;  // what the path opens when it ends in a link
};

// Where an object lies now, as a path that the system's calls take. `form` is that of
// GetFinalPathNameByHandleW.
DWORD FinalPathOf(HANDLE object, std::wstring& path, DWORD form = VOLUME_NAME_DOS);
// The length of "\\?\C:" or "\\?\UNC\server\share" in such a path.
std::size_t RootLength(const std::wstring& path);

// Makes a path absolute, as GetFullPathNameW does.
DWORD MakeFullPath(std::wstring& path);
// A path as callers write it in the form that the kernel takes as it is, whatever its length:
// "\\?\C:\folder".
DWORD ToVerbatimPath(const std::string& path, std::wstring& verbatim);
// The path as people write it, where that leads to the same place. Names with a dot at the end and others
// that only the kernel takes keep its form.
DWORD ToOrdinaryPath(const std::wstring& verbatim, std::string& path);

// `path` is relative to the folder; links on the way are followed.
DWORD OpenBelow(HANDLE folder, const std::string& path, const OpenRequest& request, UniqueHandle& opened);
// Opens an entry of a folder, or a stream of a file, by its bare name.
DWORD OpenIn(HANDLE folder, const std::string& name, const OpenRequest& request, UniqueHandle& opened);
DWORD OpenIn(HANDLE folder, const std::wstring& name, const OpenRequest& request, UniqueHandle& opened);

// Opens an entry with the privileges for changing descriptors where it is refused without.
DWORD OpenToChange(HANDLE folder, const std::wstring& name, DWORD access, UniqueHandle& opened);

// `object` is open for DELETE.
DWORD RemoveOpened(HANDLE object);

// A volume's number of an object. FAT reuses the numbers of deleted objects, for younger objects.
struct ObjectMark {
    ULONGLONG volume = 0;
    FILE_ID_128 number{};
    LONGLONG created = 0;

    bool operator==(const ObjectMark& other) const;
};

// `object` is open for FILE_READ_ATTRIBUTES.
DWORD MarkOf(HANDLE object, ObjectMark& mark);
// ERROR_FILE_INVALID when `object` is another one.
DWORD VerifyMark(HANDLE object, const ObjectMark& expected);

DWORD TagOf(HANDLE object, FILE_ATTRIBUTE_TAG_INFO& tag);
FolderEntryKind KindOfTag(const FILE_ATTRIBUTE_TAG_INFO& tag);
// 0 for a folder; ERROR_DIRECTORY for a file, ERROR_CANT_RESOLVE_FILENAME for a link.
DWORD RequireFolder(HANDLE object);
// Whether the volume keeps access lists.
DWORD AskForLists(HANDLE object, bool& areKept);

struct FolderHandle::Inside {
    explicit Inside(UniqueHandle opened) : listing(std::move(opened)) {}

    HANDLE Folder() const { return listing.Folder(); }

    // `open` opens an object with an access of its argument. Who may not list a folder may still enter it.
    static DWORD Adopt(const std::function<DWORD(ACCESS_MASK, UniqueHandle&)>& open, FolderHandle& folder);
    // A path whose last component is followed when a separator comes after it.
    static DWORD OpenNamed(const std::wstring& path, FolderHandle& folder);

    FolderListing listing;
};

struct FileHandle::Inside {
    UniqueHandle file;
    HANDLE folder = nullptr;  // outlives this; not owned
    std::string name;
};

}  // namespace permora
