#include "platform/tree_reading.h"

#include <utility>

#include "platform/api/errors.h"
#include "platform/held_object.h"
#include "platform/nt/security_descriptor.h"
#include "platform/windows/code_page.h"
#include "platform/windows/folder_entry.h"
#include "platform/windows/held_object_inside.h"
#include "platform/windows/privileges.h"

namespace permora {
namespace {

constexpr DWORD kTreeListing = FILE_LIST_DIRECTORY | FILE_TRAVERSE | FILE_READ_ATTRIBUTES;

TreeObjectKind KindOf(FolderEntryKind kind) {
    switch (kind) {
        case FolderEntryKind::kFile:
            return TreeObjectKind::kFile;
        case FolderEntryKind::kFolder:
            return TreeObjectKind::kFolder;
        case FolderEntryKind::kOther:
            break;
    }
    return TreeObjectKind::kLink;
}

DWORD AccessFor(SECURITY_INFORMATION parts) {
    const bool withSystemList = (parts & SACL_SECURITY_INFORMATION) != 0;
    return READ_CONTROL | FILE_READ_ATTRIBUTES | (withSystemList ? DWORD{ACCESS_SYSTEM_SECURITY} : 0);
}

DWORD ReadBytes(HANDLE object, SECURITY_INFORMATION parts, std::vector<std::uint8_t>& bytes) {
    DWORD size = 0;
    bytes.resize(512);
    while (GetKernelObjectSecurity(object, parts, bytes.data(), static_cast<DWORD>(bytes.size()), &size) ==
           FALSE) {
        if (GetLastError() != ERROR_INSUFFICIENT_BUFFER || size <= bytes.size()) return GetLastError();
        bytes.resize(size);
    }
    bytes.resize(GetSecurityDescriptorLength(bytes.data()));
    return nt::SecurityDescriptor::FromBytes(bytes) ? ERROR_SUCCESS : DWORD{ERROR_INVALID_SECURITY_DESCR};
}

}  // namespace

struct TreeFolder::Inside {
    // `open` opens the object with the access of its argument. What it is comes first, then its descriptor,
    // for which it is opened anew: who may not read that may list the folder all the same.
    template <typename Open>
    static DWORD Read(Open open, SECURITY_INFORMATION parts, TreeObject& object,
                      std::unique_ptr<Inside>& below);

    UniqueHandle folder;  // open for its attributes; null: it can be entered by nobody here
    SECURITY_INFORMATION parts = 0;
};

template <typename Open>
DWORD TreeFolder::Inside::Read(Open open, SECURITY_INFORMATION parts, TreeObject& object,
                               std::unique_ptr<Inside>& below) {
    UniqueHandle opened;
    FILE_ATTRIBUTE_TAG_INFO tag{};
    DWORD error =
        WithPrivileges(kReadingPrivileges, [&] { return open(DWORD{FILE_READ_ATTRIBUTES}, opened); });
    if (error == ERROR_SUCCESS) error = TagOf(opened.get(), tag);
    if (error != ERROR_SUCCESS) return error;
    object.kind = KindOf(KindOfTag(tag));
    UniqueHandle readable;
    error = WithPrivileges(kReadingPrivileges,
                           [&] { return OpenAgain(opened.get(), AccessFor(parts), readable); });
    if (error == ERROR_SUCCESS) error = ReadBytes(readable.get(), parts, object.descriptor);
    if (object.kind == TreeObjectKind::kFolder) {
        below = std::make_unique<Inside>();
        below->folder = std::move(opened);
        below->parts = parts;
    }
    return error;
}

struct TreeBuffers::Inside {};
TreeBuffers::TreeBuffers(const TreeFolder& /*folder*/) {}
TreeBuffers::~TreeBuffers() = default;

TreeFolder::TreeFolder() = default;
TreeFolder::TreeFolder(TreeFolder&& other) noexcept = default;
TreeFolder& TreeFolder::operator=(TreeFolder&& other) noexcept = default;
TreeFolder::~TreeFolder() = default;

DWORD TreeFolder::ReadTop(const HeldObject& top, SECURITY_INFORMATION parts, TreeObject& object,
                          TreeFolder& folder) {
    folder.inside.reset();
    return Inside::Read(
        [&](DWORD access, UniqueHandle& opened) {
            return OpenAgain(top.inside->object.get(), access, opened);
        },
        parts, object, folder.inside);
}

DWORD TreeFolder::List(FolderNames& names, std::size_t most) {
    names = FolderNames();
    UniqueHandle opened;
    DWORD result = WithPrivileges(kReadingPrivileges,
                                  [&] { return OpenAgain(inside->folder.get(), kTreeListing, opened); });
    if (result != ERROR_SUCCESS) return result;
    FolderListing listing(std::move(opened));
    FoundEntry found;
    for (;;) {
        const DWORD error = listing.Next(found);
        if (error == ERROR_NO_MORE_FILES) break;
        if (error != ERROR_SUCCESS) {
            result = error;
            break;
        }
        std::string name;
        // A name that is no text is missing, and the others are there.
        if (const DWORD noText = ToAnsi(found.name, name); noText != ERROR_SUCCESS)
            result = noText;
        else if (!names.Add(name, KindOf(found.kind)))
            return ERROR_NOT_ENOUGH_MEMORY;
        if (names.Bytes() > most) {
            names = FolderNames();
            return ERROR_MORE_DATA;
        }
    }
    names.Sort();
    return result;
}

DWORD TreeFolder::Read(const std::string& name, TreeObjectKind expected, TreeBuffers& /*buffers*/,
                       TreeObject& object, TreeFolder& folder) const {
    folder.inside.reset();
    object.kind = expected;
    return Inside::Read(
        [&](DWORD access, UniqueHandle& opened) {
            return OpenIn(inside->folder.get(), name, {access, kShareAll, FILE_OPEN_FOR_BACKUP_INTENT},
                          opened);
        },
        inside->parts, object, folder.inside);
}

bool TreeFolder::IgnoresCase() const {
    return true;
}

bool TreeFolder::Suspend() {
    return false;
}

DWORD TreeFolder::Resume(const TreeFolder& /*below*/) {
    return ERROR_NOT_SUPPORTED;
}

}  // namespace permora
