#include "platform/windows/list_propagation.h"

#include <utility>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/security_change.h"
#include "platform/windows/tree_change.h"

namespace permora {
namespace {

class FailureCount : public TreeObserver {
  public:
    explicit FailureCount(FailuresBelow& found) : failures(found) {}

    bool Begin(const char* /*name*/) override { return true; }
    void PassOver(const std::string& path, DWORD error) override { failures.Add(path, error); }

  private:
    FailuresBelow& failures;
};

class ListPropagation : public TreeChange {
  public:
    ListPropagation(const nt::Acl& list, TreeListMode writing, RecordedTop& top, TreeObserver& listener,
                    TreeCounts& totals)
        : TreeChange(DACL_SECURITY_INFORMATION, writing, top, listener, totals), handed(list) {}

  private:
    DWORD Begin(HANDLE /*top*/, WalkedFolder& folder) override {
        folder.list = handed;
        return ERROR_SUCCESS;
    }

    DWORD Change(const FoundObject& object, const WalkedFolder& folder, nt::SecurityDescriptor& after,
                 WayOn& wayOn) override {
        if (after.daclState != nt::DaclState::kList || after.IsDaclProtected()) {
            wayOn = WayOn::kLeaveAlone;
            return ERROR_SUCCESS;
        }
        JoinInherited(after, folder.list, object.kind, {}, {});
        return ERROR_SUCCESS;
    }

    WayOn AfterFailure() const override { return WayOn::kLeaveAlone; }

    const nt::Acl& handed;
};

}  // namespace

DWORD PropagateList(HANDLE folder, const nt::Acl& list, RecordedTop& top, FailuresBelow& below) {
    FailuresBelow failures;
    FailureCount observer(failures);
    TreeCounts counts;
    const DWORD error = ListPropagation(list, TreeListMode::kWrite, top, observer, counts).Run(folder);
    if (top.Error() != ERROR_SUCCESS) return top.Error();
    // The folder has the list, and cannot be listed.
    if (error != ERROR_SUCCESS) failures.Add({}, error);
    below = std::move(failures);
    return ERROR_SUCCESS;
}

DWORD CountPropagation(HANDLE folder, const nt::Acl& list, TreeObserver& observer, TreeCounts& counts) {
    RecordedTop top(Unrecorded(), folder, true);
    return ListPropagation(list, TreeListMode::kCountOnly, top, observer, counts).Run(folder);
}

}  // namespace permora
