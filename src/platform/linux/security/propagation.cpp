#include "platform/linux/security/propagation.h"

#include <cstddef>
#include <utility>
#include <vector>

#include "platform/folder_trail.h"
#include "platform/linux/accounts/unix_accounts.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/files/tree_walk.h"
#include "platform/linux/security/object_turn.h"
#include "platform/nt/inheritance.h"

namespace permora::host {

namespace {

class ListPropagation : public TreeVisitor {
  public:
    ListPropagation(const nt::Acl& list, DescriptorStore& volume) : lists{list}, store(volume) {}

    WalkDecision Visit(const ObjectHandle& object, const char* name, std::size_t depth) override {
        if (!store.CanHold(object)) return WalkDecision::kPassOver;
        bool inherits = false;
        DWORD error = turns.Take(object, depth);
        if (error == ERROR_SUCCESS) error = Update(object, lists[depth], inherits);
        if (error == ERROR_SUCCESS && inherits && object.IsFolder()) turns.Keep();
        turns.Leave();
        if (error != ERROR_SUCCESS) {
            Keep(error, name, depth);
            return WalkDecision::kPassOver;
        }
        if (!inherits) return WalkDecision::kPassOver;
        if (object.IsFolder()) {
            RememberList(depth + 1);
            names.Enter(EncodeName(name), depth);
        }
        return WalkDecision::kDescend;
    }

    void Fail(DWORD error, const char* name, std::size_t depth) override {
        // Another volume inherits nothing from this one.
        if (error != ERROR_NOT_SAME_DEVICE) Keep(error, name, depth);
    }

    const FailuresBelow& Failures() const { return failures; }

  private:
    // An empty name is that of the folder itself, whose contents could not be listed.
    void Keep(DWORD error, const char* name, std::size_t depth) {
        // The object vanished after it was opened.
        if (error == ERROR_FILE_NOT_FOUND) return;
        if (failures.count++ > 0) return;
        failures.firstError = error;
        failures.firstPath = names.PathOf(EncodeName(name), depth);
    }

    DWORD Update(const ObjectHandle& object, const nt::Acl& parent, bool& inherits) {
        const DWORD error = store.Read(object, descriptor);
        if (error != ERROR_SUCCESS) return error;
        inherits = descriptor.daclState == nt::DaclState::kList && !descriptor.IsDaclProtected();
        before = descriptor;
        if (inherits) JoinInherited(descriptor, parent, object);
        return descriptor == before ? ERROR_SUCCESS : store.Write(object, descriptor);
    }

    // Swapped and not copied: the places of a depth are used again for each folder of that depth.
    void RememberList(std::size_t depth) {
        if (lists.size() == depth) lists.emplace_back();
        std::swap(lists[depth], descriptor.dacl);
    }

    std::vector<nt::Acl> lists;  // by depth: the list of the folder in which the objects of that depth stand
    DescriptorStore& store;
    WalkTurns turns;
    nt::SecurityDescriptor descriptor;
    nt::SecurityDescriptor before;
    FolderTrail names;
    FailuresBelow failures;
};

}  // namespace

void JoinInherited(nt::SecurityDescriptor& descriptor, const nt::Acl& parent, const ObjectHandle& object) {
    const nt::Sid owner = descriptor.owner ? *descriptor.owner : SidForUser(object.Status().st_uid);
    const nt::Sid group = descriptor.group ? *descriptor.group : SidForGroup(object.Status().st_gid);
    descriptor.dacl = nt::MergeInherited(descriptor.dacl, parent, object.Kind(), owner, group);
    descriptor.control |= nt::kDaclAutoInherited;
}

FailuresBelow PropagateList(const ObjectHandle& folder, const nt::Acl& list, DescriptorStore& store) {
    ListPropagation propagation(list, store);
    WalkTree(folder, propagation);
    return propagation.Failures();
}

}  // namespace permora::host
