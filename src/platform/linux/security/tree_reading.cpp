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
#include "platform/linux/files/closed_folder.h"
#include "platform/linux/files/folder_listing.h"
#include "platform/linux/files/linux_volume.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/files/unmounted_entry.h"
#include "platform/linux/security/descriptor_store.h"
#include "platform/linux/security/held_object_inside.h"
#include "platform/security_change.h"

namespace permora {
namespace host {

// What all folders of a tree share. Nothing of it changes.
struct ReadTree {
    DescriptorStoreKind kind = DescriptorStoreKind::kNone;
    SECURITY_INFORMATION parts = 0;
    // Nothing can be mounted on what is seen here (OpenWithoutDevices).
    bool isFreeOfMounts = false;
    std::uint64_t mount = 0;  // where something can be
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

DWORD ReadHeld(host::DescriptorStore& store, const ObjectHandle& held, SECURITY_INFORMATION parts,
               TreeObject& object) {
    object.kind = KindOfMode(held.Status().st_mode);
    nt::SecurityDescriptor found;
    const DWORD error = store.Read(held, found, SystemListFor(parts));
    object.isStored = store.HasFoundStored();
    return error == ERROR_SUCCESS ? Reduce(found, parts, object.descriptor) : error;
}

constexpr int kEntryItself = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | AT_STATX_DONT_SYNC;

// Nothing when the kernel does not say on which mount an entry lies.
std::optional<std::uint64_t> MountOf(const struct statx& status) {
    if ((status.stx_mask & STATX_MNT_ID) == 0) return std::nullopt;
    return status.stx_mnt_id;
}

}  // namespace

struct TreeBuffers::Inside {
    host::DescriptorStore store;
    std::string hostName;
};

struct TreeFolder::Inside {
    Inside(std::shared_ptr<const host::ReadTree> whole, UniqueFd opened)
        : tree(std::move(whole)), folder(std::move(opened)) {}

    static std::unique_ptr<Inside> Enter(const std::shared_ptr<const host::ReadTree>& tree,
                                         ObjectHandle& held);
    DWORD ReadFolder(TreeBuffers::Inside& buffers, TreeObject& object, std::unique_ptr<Inside>& below) const;
    DWORD ReadEntry(TreeBuffers::Inside& buffers, TreeObject& object) const;
    // Of an entry whose kind the listing does not tell for certain, or on which something may be mounted.
    DWORD ExamineEntry(int opened, const char* hostName, TreeObjectKind& kind) const;

    std::shared_ptr<const host::ReadTree> tree;
    UniqueFd folder;  // to be listed, unless it cannot be; none while it is suspended
    bool isListed = false;
    std::optional<host::ClosedFolder> way;  // to a suspended one
};

std::unique_ptr<TreeFolder::Inside> TreeFolder::Inside::Enter(
    const std::shared_ptr<const host::ReadTree>& tree, ObjectHandle& held) {
    UniqueFd opened;
    const DWORD error = held.TakeForListing(opened);
    // What may be entered and not listed is there all the same; List reports it.
    if (error != ERROR_SUCCESS) opened.Reset(fcntl(held.Descriptor(), F_DUPFD_CLOEXEC, 0));
    return opened ? std::make_unique<Inside>(tree, std::move(opened)) : nullptr;
}

DWORD TreeFolder::Inside::ReadFolder(TreeBuffers::Inside& buffers, TreeObject& object,
                                     std::unique_ptr<Inside>& below) const {
    ObjectHandle held;
    DWORD error = ObjectHandle::OpenUnmountedFolderAt(folder.Get(), buffers.hostName.c_str(), held);
    if (error != ERROR_SUCCESS) return error;
    error = ReadHeld(buffers.store, held, tree->parts, object);
    if (held.IsFolder()) below = Enter(tree, held);
    return error;
}

DWORD TreeFolder::Inside::ReadEntry(TreeBuffers::Inside& buffers, TreeObject& object) const {
    nt::SecurityDescriptor found;
    const DWORD error =
        buffers.store.ReadEntry(folder.Get(), buffers.hostName.c_str(), found, SystemListFor(tree->parts));
    object.isStored = buffers.store.HasFoundStored();
    return error == ERROR_SUCCESS ? Reduce(found, tree->parts, object.descriptor) : error;
}

DWORD TreeFolder::Inside::ExamineEntry(int opened, const char* hostName, TreeObjectKind& kind) const {
    struct statx status {};
    if (statx(opened, hostName, kEntryItself, STATX_TYPE | STATX_MNT_ID, &status) != 0)
        return ErrorFromErrno(errno);
    const std::optional<std::uint64_t> mount = MountOf(status);
    if (mount && *mount != tree->mount) return ERROR_NOT_SAME_DEVICE;
    ObjectHandle held;
    if (!mount) {
        const DWORD error = ObjectHandle::OpenUnmountedAt(opened, hostName, held);
        if (error != ERROR_SUCCESS) return error;
    }
    kind = KindOfMode(status.stx_mode);
    return ERROR_SUCCESS;
}

TreeBuffers::TreeBuffers(const TreeFolder& folder)
    : inside(std::make_unique<Inside>(
          Inside{.store = host::DescriptorStore(folder.inside->tree->kind), .hostName = {}})) {}
TreeBuffers::~TreeBuffers() = default;

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
    tree->kind = host::StoreKindOf(held);
    struct statx status {};
    if (statx(held.Descriptor(), "", kEntryItself | AT_EMPTY_PATH, STATX_MNT_ID, &status) == 0)
        tree->mount = MountOf(status).value_or(0);
    host::DescriptorStore store(tree->kind);
    const DWORD error = ReadHeld(store, held, parts, object);
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

DWORD TreeFolder::List(FolderNames& names, std::size_t most) {
    names = FolderNames();
    if (std::exchange(inside->isListed, true)) lseek(inside->folder.Get(), 0, SEEK_SET);
    host::FolderListing listing(std::move(inside->folder));
    host::FolderListing::Entry entry{};
    DWORD error = ERROR_SUCCESS;
    while (listing.Next(entry, error)) {
        TreeObjectKind kind = KindOfMode(static_cast<mode_t>(DTTOIF(entry.type)));
        // An object that cannot be examined has vanished; reading it reports that.
        if (entry.type == DT_UNKNOWN &&
            inside->ExamineEntry(listing.Descriptor(), entry.name, kind) != ERROR_SUCCESS)
            kind = TreeObjectKind::kFile;
        if (!names.Add(host::EncodeName(entry.name), kind)) {
            error = ERROR_NOT_ENOUGH_MEMORY;
            break;
        }
        if (names.Bytes() > most) {
            names = FolderNames();
            error = ERROR_MORE_DATA;
            break;
        }
    }
    inside->folder = listing.Release();
    names.Sort();
    return error;
}

DWORD TreeFolder::Read(const std::string& name, TreeObjectKind expected, TreeBuffers& buffers,
                       TreeObject& object, TreeFolder& folder) const {
    folder.inside.reset();
    object.kind = expected;
    std::string& hostName = buffers.inside->hostName;
    if (!host::DecodeName(name, hostName)) return ERROR_INVALID_NAME;
    if (expected != TreeObjectKind::kFolder && !inside->tree->isFreeOfMounts) {
        const DWORD error = inside->ExamineEntry(inside->folder.Get(), hostName.c_str(), object.kind);
        if (error != ERROR_SUCCESS) return error;
    }
    if (object.kind == TreeObjectKind::kFolder)
        return inside->ReadFolder(*buffers.inside, object, folder.inside);
    return inside->ReadEntry(*buffers.inside, object);
}

bool TreeFolder::IgnoresCase() const {
    switch (inside->tree->kind) {
        case host::DescriptorStoreKind::kNtfs3g:
        case host::DescriptorStoreKind::kNtfs3:
        case host::DescriptorStoreKind::kSmb:
            return true;
        default:
            return false;
    }
}

bool TreeFolder::Suspend() {
    inside->way = host::ClosedFolder::Of(inside->folder.Get(), inside->tree->isFreeOfMounts);
    if (!inside->way) return false;
    inside->folder.Reset();
    return true;
}

DWORD TreeFolder::Resume(const TreeFolder& below) {
    // Its names are known by now, and it may be one that may be entered and not listed.
    return inside->way->Open(below.inside->folder.Get(), O_PATH, inside->folder);
}

}  // namespace permora
