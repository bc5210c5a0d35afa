#include "platform/tree_reading.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <optional>
#include <utility>

#include "platform/api/errors.h"
#include "platform/held_object.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/folder_listing.h"
#include "platform/linux/files/linux_volume.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/files/unmounted_entry.h"
#include "platform/linux/security/descriptor_store.h"
#include "platform/linux/security/held_object_inside.h"
#include "platform/security_change.h"

namespace permora {
namespace host {

// What all folders of a tree share.
struct ReadTree {
    DescriptorStore store;
    SECURITY_INFORMATION parts = 0;
    // Nothing can be mounted on what is seen here (OpenWithoutDevices).
    bool isFreeOfMounts = false;
    std::uint64_t mount = 0;  // where something can be
    bool ignoresCase = false;
};

}  // namespace host

namespace {

using host::ErrorFromErrno;
using host::ObjectHandle;
using host::UniqueFd;

TreeObjectKind KindOfMode(mode_t mode) {
    if (S_ISDIR(mode)) return TreeObjectKind::kFolder;
    if (S_ISREG(mode)) return TreeObjectKind::kFile;
    return S_ISLNK(mode) ? TreeObjectKind::kLink : TreeObjectKind::kOther;
}

DWORD Reduce(nt::SecurityDescriptor& found, SECURITY_INFORMATION parts, std::vector<std::uint8_t>& bytes) {
    ReduceToParts(found, parts);
    bytes.clear();
    return found.AppendTo(bytes) ? ERROR_SUCCESS : ERROR_INVALID_SECURITY_DESCR;
}

DWORD ReadHeld(host::ReadTree& tree, const ObjectHandle& held, TreeObject& object) {
    object.kind = KindOfMode(held.Status().st_mode);
    nt::SecurityDescriptor found;
    const DWORD error = tree.store.Read(held, found);
    object.isStored = tree.store.HasFoundStored();
    return error == ERROR_SUCCESS ? Reduce(found, tree.parts, object.descriptor) : error;
}

constexpr int kEntryItself = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | AT_STATX_DONT_SYNC;

// Nothing when the kernel does not say on which mount an entry lies.
std::optional<std::uint64_t> MountOf(const struct statx& status) {
    if ((status.stx_mask & STATX_MNT_ID) == 0) return std::nullopt;
    return status.stx_mnt_id;
}

}  // namespace

struct TreeFolder::Inside {
    Inside(std::shared_ptr<host::ReadTree> whole, UniqueFd opened)
        : tree(std::move(whole)), folder(std::move(opened)) {}

    static std::unique_ptr<Inside> Enter(const std::shared_ptr<host::ReadTree>& tree, ObjectHandle& held);
    DWORD ReadFolder(const char* hostName, TreeObject& object, std::unique_ptr<Inside>& below) const;
    DWORD ReadEntry(const char* hostName, TreeObject& object) const;
    // Of an entry whose kind the listing does not tell for certain, or on which something may be mounted.
    DWORD ExamineEntry(const char* hostName, TreeObjectKind& kind) const;

    std::shared_ptr<host::ReadTree> tree;
    UniqueFd folder;  // to be listed, unless it cannot be
};

std::unique_ptr<TreeFolder::Inside> TreeFolder::Inside::Enter(const std::shared_ptr<host::ReadTree>& tree,
                                                              ObjectHandle& held) {
    UniqueFd opened;
    DWORD error = held.TakeForListing(opened);
    // What may be entered and not listed is there all the same; List reports it.
    if (error != ERROR_SUCCESS) opened.Reset(fcntl(held.Descriptor(), F_DUPFD_CLOEXEC, 0));
    return opened ? std::make_unique<Inside>(tree, std::move(opened)) : nullptr;
}

DWORD TreeFolder::Inside::ReadFolder(const char* hostName, TreeObject& object,
                                     std::unique_ptr<Inside>& below) const {
    ObjectHandle held;
    DWORD error = ObjectHandle::OpenUnmountedFolderAt(folder.Get(), hostName, held);
    if (error != ERROR_SUCCESS) return error;
    error = ReadHeld(*tree, held, object);
    if (held.IsFolder()) below = Enter(tree, held);
    return error;
}

DWORD TreeFolder::Inside::ReadEntry(const char* hostName, TreeObject& object) const {
    nt::SecurityDescriptor found;
    const DWORD error = tree->store.ReadEntry(folder.Get(), hostName, found);
    object.isStored = tree->store.HasFoundStored();
    return error == ERROR_SUCCESS ? Reduce(found, tree->parts, object.descriptor) : error;
}

DWORD TreeFolder::Inside::ExamineEntry(const char* hostName, TreeObjectKind& kind) const {
    struct statx status {};
    if (statx(folder.Get(), hostName, kEntryItself, STATX_TYPE | STATX_MNT_ID, &status) != 0)
        return ErrorFromErrno(errno);
    const std::optional<std::uint64_t> mount = MountOf(status);
    if (mount && *mount != tree->mount) return ERROR_NOT_SAME_DEVICE;
    ObjectHandle held;
    if (!mount) {
        const DWORD error = ObjectHandle::OpenUnmountedAt(folder.Get(), hostName, held);
        if (error != ERROR_SUCCESS) return error;
    }
    kind = KindOfMode(status.stx_mode);
    return ERROR_SUCCESS;
}

TreeFolder::TreeFolder() = default;
TreeFolder::TreeFolder(TreeFolder&& other) noexcept = default;
TreeFolder& TreeFolder::operator=(TreeFolder&& other) noexcept = default;
TreeFolder::~TreeFolder() = default;

DWORD TreeFolder::ReadTop(const HeldObject& top, SECURITY_INFORMATION parts, TreeObject& object,
                          TreeFolder& folder) {
    host::RaiseDescriptorLimit();
    const ObjectHandle& held = top.inside->target.object;
    auto tree = std::make_shared<host::ReadTree>();
    tree->parts = parts;
    const host::DescriptorStoreKind kind = host::StoreKindOf(held);
    tree->ignoresCase =
        kind == host::DescriptorStoreKind::kNtfs3g || kind == host::DescriptorStoreKind::kNtfs3;
    struct statx status {};
    if (statx(held.Descriptor(), "", kEntryItself | AT_EMPTY_PATH, STATX_MNT_ID, &status) == 0)
        tree->mount = MountOf(status).value_or(0);
    const DWORD error = ReadHeld(*tree, held, object);
    (void)tree->store.CanHold(held);  // entries are read by those who know where descriptors are
    folder.inside.reset();
    if (!held.IsFolder()) return error;
    std::optional<UniqueFd> view = host::OpenWithoutDevices(held);
    tree->isFreeOfMounts = view.has_value();
    UniqueFd opened;
    if (view)
        opened = std::move(*view);
    else if (held.OpenForListing(opened) != ERROR_SUCCESS)
        opened.Reset(fcntl(held.Descriptor(), F_DUPFD_CLOEXEC, 0));
    if (opened) folder.inside = std::make_unique<Inside>(std::move(tree), std::move(opened));
    return error;
}

DWORD TreeFolder::List(FolderNames& names) const {
    names = FolderNames();
    UniqueFd copy(fcntl(inside->folder.Get(), F_DUPFD_CLOEXEC, 0));
    if (!copy) return ErrorFromErrno(errno);
    lseek(copy.Get(), 0, SEEK_SET);
    host::FolderListing listing(std::move(copy));
    host::FolderListing::Entry entry{};
    DWORD error = ERROR_SUCCESS;
    while (listing.Next(entry, error)) {
        TreeObjectKind kind = KindOfMode(static_cast<mode_t>(DTTOIF(entry.type)));
        // An object that cannot be examined has vanished; reading it reports that.
        if (entry.type == DT_UNKNOWN && inside->ExamineEntry(entry.name, kind) != ERROR_SUCCESS)
            kind = TreeObjectKind::kFile;
        if (!names.Add(host::EncodeName(entry.name), kind)) return ERROR_NOT_ENOUGH_MEMORY;
    }
    names.Sort();
    return error;
}

DWORD TreeFolder::Read(const std::string& name, TreeObjectKind expected, TreeObject& object,
                       TreeFolder& folder) const {
    folder.inside.reset();
    object.kind = expected;
    std::string hostName;
    if (!host::DecodeName(name, hostName)) return ERROR_INVALID_NAME;
    if (expected != TreeObjectKind::kFolder && !inside->tree->isFreeOfMounts) {
        const DWORD error = inside->ExamineEntry(hostName.c_str(), object.kind);
        if (error != ERROR_SUCCESS) return error;
    }
    if (object.kind == TreeObjectKind::kFolder)
        return inside->ReadFolder(hostName.c_str(), object, folder.inside);
    return inside->ReadEntry(hostName.c_str(), object);
}

bool TreeFolder::IgnoresCase() const {
    return inside->tree->ignoresCase;
}

}  // namespace permora
