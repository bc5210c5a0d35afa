// The descriptor of a held object: reading parts of it, and writing new ones.
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/memory.h"
#include "platform/held_object.h"
#include "platform/linux/accounts/unix_accounts.h"
#include "platform/linux/security/descriptor_store.h"
#include "platform/linux/security/descriptor_view.h"
#include "platform/linux/security/held_object_inside.h"
#include "platform/linux/security/owner_setting.h"
#include "platform/linux/security/propagation.h"
#include "platform/linux/security/recorded_top.h"
#include "platform/security_change.h"

namespace permora {
namespace {

using host::DescriptorStore;
using host::ObjectHandle;
using host::ResolvedObject;

// What the object inherits from; nothing for the root of a volume, which has no parent.
DWORD ReadAbove(const ResolvedObject& target, DescriptorStore& store, std::optional<ListAbove>& above) {
    if (!target.parent) return ERROR_SUCCESS;
    nt::SecurityDescriptor parent;
    const DWORD error = store.Read(target.parent, parent);
    if (error == ERROR_SUCCESS) above = {ListOf(parent), target.object.Kind(), {}, {}};
    return error;
}

// Whether the object's list is still the one that was read as `expected`.
bool HasListOf(const nt::SecurityDescriptor& descriptor, PSECURITY_DESCRIPTOR expected) {
    const std::optional<nt::SecurityDescriptor> before = host::DescriptorValue(expected);
    return before && HasSameList(*before, descriptor);
}

// Reads the descriptor and applies the change. The object is read last, since a change between this and the
// write is not noticed.
DWORD MakeChanged(const ResolvedObject& target, const SecurityChange& change, PSECURITY_DESCRIPTOR expected,
                  DescriptorStore& store, nt::SecurityDescriptor& descriptor) {
    const SystemList systemList = SystemListFor(change.information);
    DWORD error = store.Read(target.object, descriptor, systemList);
    if (error != ERROR_SUCCESS) return error;
    std::optional<ListAbove> above;
    if (InheritsAfter(change, descriptor)) {
        error = ReadAbove(target, store, above);
        // Reading the parent through another process took a while.
        if (error == ERROR_SUCCESS) error = store.Read(target.object, descriptor, systemList);
        if (error != ERROR_SUCCESS) return error;
    }
    if (expected != nullptr && !HasListOf(descriptor, expected)) return ERROR_REVISION_MISMATCH;
    if (above && !descriptor.owner) above->owner = host::SidForUser(target.object.Status().st_uid);
    if (above && !descriptor.group) above->group = host::SidForGroup(target.object.Status().st_gid);
    ApplyChange(change, above ? &*above : nullptr, descriptor);
    return ERROR_SUCCESS;
}

// From what is kept to what will be.
struct Step {
    StoredSecurity before;
    StoredSecurity after;
    bool operator==(const Step&) const = default;
};

DWORD Prepare(ResolvedObject& target, const SecurityChange& change, PSECURITY_DESCRIPTOR expected,
              DescriptorStore& store, nt::SecurityDescriptor& descriptor, Step& step) {
    DWORD error = target.object.Refresh();
    if (error == ERROR_SUCCESS) error = MakeChanged(target, change, expected, store, descriptor);
    if (error != ERROR_SUCCESS) return error;
    step.before = store.Found(target.object);
    const SystemList systemList = SystemListFor(change.information);
    return change.Has(OWNER_SECURITY_INFORMATION)
               ? host::PrepareWithOwner(target.object, descriptor, store, step.after, systemList)
               : store.Prepare(target.object, descriptor, step.after, systemList);
}

// Recording takes long enough for others to change the object, so it is done again until what was recorded is
// what is about to be done.
DWORD PrepareRecorded(ResolvedObject& target, const SecurityChange& change, PSECURITY_DESCRIPTOR expected,
                      const host::RecordedTop& top, DescriptorStore& store,
                      nt::SecurityDescriptor& descriptor, Step& step) {
    constexpr int kMostAttempts = 10;
    DWORD error = Prepare(target, change, expected, store, descriptor, step);
    if (top.BatchSize() == 0) return error;
    for (int attempt = 0; error == ERROR_SUCCESS && attempt < kMostAttempts; ++attempt) {
        if (step.before == step.after) return ERROR_SUCCESS;
        const DescriptorChange record{.path = {},
                                      .isFolder = target.object.IsFolder(),
                                      .fileNumber = target.object.Status().st_ino,
                                      .before = step.before,
                                      .after = step.after};
        error = top.Record({&record, 1});
        if (error != ERROR_SUCCESS) return error;
        const Step recorded = std::move(step);
        error = Prepare(target, change, expected, store, descriptor, step);
        if (error == ERROR_SUCCESS && step == recorded) return ERROR_SUCCESS;
    }
    return error == ERROR_SUCCESS ? ERROR_REVISION_MISMATCH : error;
}

// The requested parts, self-relative.
DWORD HandOut(nt::SecurityDescriptor descriptor, SECURITY_INFORMATION parts, UniqueLocal<void>& block) {
    ReduceToParts(descriptor, parts);
    std::vector<std::uint8_t> bytes;
    if (!descriptor.AppendTo(bytes)) return ERROR_INVALID_SECURITY_DESCR;
    UniqueLocal<void> made(LocalAlloc(LMEM_FIXED, bytes.size()));
    if (!made) return ERROR_NOT_ENOUGH_MEMORY;
    std::memcpy(made.get(), bytes.data(), bytes.size());
    block = std::move(made);
    return ERROR_SUCCESS;
}

DWORD ReadFrom(const ObjectHandle& object, std::optional<host::DescriptorStoreKind> kind,
               SECURITY_INFORMATION information, ReadParts& parts) {
    nt::SecurityDescriptor found;
    ReadParts read;
    DWORD error = DescriptorStore(kind).Read(object, found, SystemListFor(information));
    if (error == ERROR_SUCCESS) error = HandOut(std::move(found), information, read.descriptor);
    if (error != ERROR_SUCCESS) return error;
    const auto view = host::DescriptorView::Of(read.descriptor.get());
    if (!view) return ERROR_INVALID_SECURITY_DESCR;
    read.owner = view->owner;
    read.dacl = view->dacl;
    parts = std::move(read);
    return ERROR_SUCCESS;
}

}  // namespace

SECURITY_INFORMATION HeldObject::PartsAtOnce() const {
    if (!inside->storeKind) inside->storeKind = host::StoreKindOf(inside->target.object);
    return inside->storeKind == host::DescriptorStoreKind::kSmb ? kUsualParts : kDescriptorParts;
}

DWORD HeldObject::ReadSecurity(SECURITY_INFORMATION information, ReadParts& parts) const {
    return ReadFrom(inside->target.object, inside->storeKind, information, parts);
}

DWORD HeldObject::ReadAbove(SECURITY_INFORMATION information, ReadParts& parts) const {
    const ObjectHandle& folder = inside->target.parent;
    if (folder) return ReadFrom(folder, std::nullopt, information, parts);
    parts = {};
    return ERROR_SUCCESS;
}

DWORD HeldObject::PreviewSecurity(SECURITY_INFORMATION information, const NewParts& parts,
                                  SecurityPreview& preview) const {
    SecurityChange change;
    SecurityPreview made;
    Step step;
    DescriptorStore store;
    DWORD error = TakeChange(information, parts, change);
    if (error == ERROR_SUCCESS)
        error = store.Read(inside->target.object, made.before, SystemListFor(information));
    if (error == ERROR_SUCCESS) error = Prepare(inside->target, change, nullptr, store, made.after, step);
    made.changes = step.before != step.after;
    if (error == ERROR_SUCCESS) preview = std::move(made);
    return error;
}

DWORD HeldObject::WriteSecurity(SECURITY_INFORMATION information, const NewParts& parts,
                                PSECURITY_DESCRIPTOR expected, ChangeRecorder& recorder,
                                FailuresBelow& below) const {
    host::ResolvedObject& target = inside->target;
    SecurityChange change;
    host::ObjectTurn turn;
    host::RecordedTop top;
    DescriptorStore store;
    nt::SecurityDescriptor descriptor;
    Step step;
    DWORD error = TakeChange(information, parts, change);
    if (error == ERROR_SUCCESS && !inside->turn) error = turn.Take(target.object);
    if (error == ERROR_SUCCESS) error = top.Begin(*this, recorder);
    if (error == ERROR_SUCCESS)
        error = PrepareRecorded(target, change, expected, top, store, descriptor, step);
    if (error == ERROR_SUCCESS) error = store.Replace(target.object, step.before, step.after);
    const bool handsDown = change.Has(DACL_SECURITY_INFORMATION) && target.object.IsFolder();
    if (error != ERROR_SUCCESS || !handsDown) return error;
    FailuresBelow failures;
    error = host::PropagateList(target.object, ListOf(descriptor), store, top, failures);
    if (error == ERROR_SUCCESS) below = std::move(failures);
    return error;
}

}  // namespace permora
