// What FolderHandle and FileHandle share on Windows: NtCreateFile opens relative to a handle, and what is
// opened is never a reparse point's target.
#pragma once

#include <memory>
#include <string>

#include "platform/entry_identity.h"
#include "platform/folder_files.h"

namespace permora {

inline constexpr ULONG kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

enum class LastLink { kItself, kFollow };

struct OpenRequest {
    ACCESS_MASK access;
    ULONG share = kShareAll;
    ULONG options = 0;
    LastLink lastLink = LastLink::kItself;  // what the path opens when it ends in a link
};

// Where an object lies now, as a path that the system's calls take.
DWORD FinalPathOf(HANDLE object, std::wstring& path);

// `path` is relative to the folder; links on the way are followed.
DWORD OpenBelow(HANDLE folder, const std::string& path, const OpenRequest& request, UniqueHandle& opened);
// Opens an entry of a folder, or a stream of a file, by its bare name.
DWORD OpenIn(HANDLE folder, const std::string& name, const OpenRequest& request, UniqueHandle& opened);

// `object` is open for DELETE.
DWORD RemoveOpened(HANDLE object);

// What a volume calls an object. FAT gives the numbers of deleted objects to others, which are younger.
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

struct EntryIdentity::Inside {
    ObjectMark mark;
};

struct FileHandle::Inside {
    UniqueHandle file;
    HANDLE folder = nullptr;  // outlives this; not owned
    std::string name;
};

}  // namespace permora
