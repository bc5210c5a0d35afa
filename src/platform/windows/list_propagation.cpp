#include "platform/windows/list_propagation.h"

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
    // In the order of the paths.
    void PassOver(const std::string& path, DWORD error) override {
        if (failures.count++ > 0) return;
        failures.firstError = error;
        failures.firstPath = path;
    }

  private:
    FailuresBelow& failures;
};

class ListPropagation : public TreeChange {
  public:
    ListPropagation(const nt::Acl& list, RecordedTop& top, TreeObserver& listener, TreeCounts& totals)
        : TreeChange(DACL_SECURITY_INFORMATION, TreeListMode::kWrite, top, listener, totals), handed(list) {}

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
    const DWORD error = ListPropagation(list, top, observer, counts).Run(folder);
    if (top.Error() != ERROR_SUCCESS) return top.Error();
    // The folder has the list, and cannot be listed.
    if (error != ERROR_SUCCESS) failures = {failures.count + 1, error, {}};
    below = failures;
    return ERROR_SUCCESS;
}

}  // namespace permora
