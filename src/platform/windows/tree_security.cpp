// SetListsBelow and SetOwnersBelow: what an object inherits is computed here, as the system does when it
// carries a list down, so that each object is read and written once.
#include <cstdint>
#include <optional>

#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/raw_security.h"
#include "platform/security_change.h"
#include "platform/windows/held_object_inside.h"
#include "platform/windows/list_propagation.h"
#include "platform/windows/tree_change.h"

namespace permora {
namespace {

class ListSetting : public TreeChange {
  public:
    // `handedDown` takes the place of the folder's own list unless it is null.
    ListSetting(const nt::Acl& list, const nt::Acl* handedDown, TreeListMode writing, RecordedTop& top,
                TreeObserver& listener, TreeCounts& totals)
        : TreeChange(DACL_SECURITY_INFORMATION, writing, top, listener, totals),
          explicitEntries(list),
          handed(handedDown) {}

  private:
    DWORD Begin(HANDLE top, WalkedFolder& folder) override {
        if (handed == nullptr) return ReadFolderList(top, folder);
        folder.list = *handed;
        return ERROR_SUCCESS;
    }

    DWORD Change(const FoundObject& object, const WalkedFolder& folder, nt::SecurityDescriptor& after,
                 WayOn& /*wayOn*/) override {
        if (folder.readError != ERROR_SUCCESS) return folder.readError;
        after.control &= static_cast<std::uint16_t>(~(nt::kDaclProtected | SE_DACL_DEFAULTED));
        after.control |= nt::kDaclPresent;
        after.daclState = nt::DaclState::kList;
        after.dacl = explicitEntries;
        JoinInherited(after, folder.list, object.kind, {}, {});
        return ERROR_SUCCESS;
    }

    // They get their list all the same, and inherit from the one that the folder has kept.
    WayOn AfterFailure() const override { return WayOn::kEnter; }

    const nt::Acl& explicitEntries;
    const nt::Acl* const handed;
};

class OwnerSetting : public TreeChange {
  public:
    OwnerSetting(const nt::Sid& account, LinkedFiles linkedFiles, TreeListMode writing, RecordedTop& top,
                 TreeObserver& listener, TreeCounts& totals)
        : TreeChange(OWNER_SECURITY_INFORMATION, writing, top, listener, totals),
          owner(account),
          linked(linkedFiles) {}

  private:
    DWORD Begin(HANDLE /*top*/, WalkedFolder& /*folder*/) override { return ERROR_SUCCESS; }

    DWORD Change(const FoundObject& object, const WalkedFolder& /*folder*/, nt::SecurityDescriptor& after,
                 WayOn& /*wayOn*/) override {
        BY_HANDLE_FILE_INFORMATION info{};
        if (GetFileInformationByHandle(object.handle.get(), &info) == FALSE) return GetLastError();
        const bool isFile = object.kind == nt::ObjectKind::kFile;
        if (linked == LinkedFiles::kPassOver && isFile && info.nNumberOfLinks > 1) return kHasFurtherNames;
        if (after.owner == owner) return ERROR_SUCCESS;
        after.owner = owner;
        after.control &= static_cast<std::uint16_t>(~SE_OWNER_DEFAULTED);
        return ERROR_SUCCESS;
    }

    WayOn AfterFailure() const override { return WayOn::kEnter; }

    const nt::Sid owner;
    const LinkedFiles linked;
};

}  // namespace

DWORD HeldObject::SetListsBelow(PACL list, TreeListMode mode, ChangeRecorder& recorder,
                                TreeObserver& observer, TreeCounts& counts) const {
    const std::optional<nt::Acl> entries = AclOf(list);
    if (!entries) return ERROR_INVALID_ACL;
    const nt::Acl mapped = nt::MapGenericRights(*entries, {});
    RecordedTop top(recorder, inside->object.get(), IsFolder());
    return ListSetting(mapped, nullptr, mode, top, observer, counts).Run(inside->object.get());
}

DWORD HeldObject::PreviewBelow(const nt::Acl& list, BelowChange change, TreeObserver& observer,
                               TreeCounts& counts) const {
    const HANDLE folder = inside->object.get();
    if (change == BelowChange::kCarryDown) return CountPropagation(folder, list, observer, counts);
    const nt::Acl nothing;
    RecordedTop top(Unrecorded(), folder, IsFolder());
    return ListSetting(nothing, &list, TreeListMode::kCountOnly, top, observer, counts).Run(folder);
}

DWORD HeldObject::SetOwnersBelow(PSID owner, LinkedFiles linked, TreeListMode mode, ChangeRecorder& recorder,
                                 TreeObserver& observer, TreeCounts& counts) const {
    const std::optional<nt::Sid> account = SidOf(owner);
    if (!account) return ERROR_INVALID_SID;
    RecordedTop top(recorder, inside->object.get(), IsFolder());
    return OwnerSetting(*account, linked, mode, top, observer, counts).Run(inside->object.get());
}

}  // namespace permora
