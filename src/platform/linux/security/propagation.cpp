#include "platform/linux/security/propagation.h"

#include <cstddef>
#include <utility>
#include <vector>

#include "platform/linux/accounts/unix_accounts.h"
#include "platform/linux/files/tree_walk.h"
#include "platform/nt/inheritance.h"

namespace permora::host {

namespace {

class ListPropagation : public TreeVisitor {
  public:
    ListPropagation(const nt::Acl& list, DescriptorStore& volume) : lists{list}, store(volume) {}

    WalkDecision Visit(const ObjectHandle& object, const char* /*name*/, std::size_t depth) override {
        if (!store.CanHold(object)) return WalkDecision::kPassOver;
        const DWORD readError = store.Read(object, descriptor);
        if (readError != ERROR_SUCCESS) {
            Keep(readError);
            return WalkDecision::kPassOver;
        }
        const bool inherits = descriptor.daclState == nt::DaclState::kList && !descriptor.IsDaclProtected();
        if (!inherits) return WalkDecision::kPassOver;
        const DWORD writeError = Update(object, lists[depth]);
        if (writeError != ERROR_SUCCESS) {
            Keep(writeError);
            return WalkDecision::kPassOver;
        }
        if (object.IsFolder()) RememberList(depth + 1);
        return WalkDecision::kDescend;
    }

    void Fail(DWORD error, const char* /*name*/, std::size_t /*depth*/) override {
        // Another volume inherits nothing from this one.
        if (error != ERROR_NOT_SAME_DEVICE) Keep(error);
    }

    DWORD FirstError() const { return firstError; }

  private:
    void Keep(DWORD error) {
        // The object vanished after it was opened.
        if (error == ERROR_FILE_NOT_FOUND) return;
        if (firstError == ERROR_SUCCESS) firstError = error;
    }

    DWORD Update(const ObjectHandle& object, const nt::Acl& parent) {
        before = descriptor;
        JoinInherited(descriptor, parent, object);
        return descriptor == before ? ERROR_SUCCESS : store.Write(object, descriptor);
    }

    // Swapped and not copied: the places of a depth are used again for each folder of that depth.
    void RememberList(std::size_t depth) {
        if (lists.size() == depth) lists.emplace_back();
        std::swap(lists[depth], descriptor.dacl);
    }

    std::vector<nt::Acl> lists;  // by depth: the list of the folder in which the objects of that depth stand
    DescriptorStore& store;
    nt::SecurityDescriptor descriptor;
    nt::SecurityDescriptor before;
    DWORD firstError = ERROR_SUCCESS;
};

}  // namespace

void JoinInherited(nt::SecurityDescriptor& descriptor, const nt::Acl& parent, const ObjectHandle& object) {
    const nt::Sid owner = descriptor.owner ? *descriptor.owner : SidForUser(object.Status().st_uid);
    const nt::Sid group = descriptor.group ? *descriptor.group : SidForGroup(object.Status().st_gid);
    descriptor.dacl = nt::MergeInherited(descriptor.dacl, parent, object.Kind(), owner, group);
    descriptor.control |= nt::kDaclAutoInherited;
}

DWORD PropagateList(const ObjectHandle& folder, const nt::Acl& list, DescriptorStore& store) {
    ListPropagation propagation(list, store);
    WalkTree(folder, propagation);
    return propagation.FirstError();
}

}  // namespace permora::host
