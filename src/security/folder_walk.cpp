#include "security/folder_walk.h"

#include <string>
#include <utility>

#include "platform/api/errors.h"
#include "security/object_security.h"

namespace permora {
namespace {

// Records objects that are passed over because they may not belong to the tree. The user may expect them to
// be changed.
class WalkObserver : public TreeObserver {
  public:
    explicit WalkObserver(const std::function<bool(const char* name)>& beginObject) : begin(beginObject) {}

    void SetItem(const std::string& path) { item = path; }
    bool Begin(const char* name) override { return begin(name); }
    void PassOver(const std::string& path, DWORD error) override {
        if (error == ERROR_NOT_SAME_DEVICE) Count(path, mounted);
        if (error == kHasFurtherNames) Count(path, linked);
    }
    void AppendTo(Outcomes& outcomes) const {
        for (const Outcome& outcome : {mounted, linked})
            if (!outcome.object.empty()) outcomes.push_back(outcome);
    }

  private:
    void Count(const std::string& path, Outcome& outcome) const {
        if (outcome.object.empty())
            outcome.object = ChildPath(item, path);
        else
            ++outcome.more;
    }

    const std::function<bool(const char* name)>& begin;
    std::string item;
    Outcome mounted{ERROR_NOT_SAME_DEVICE, Step::kPassOverMounted};
    Outcome linked{kHasFurtherNames, Step::kPassOverLinked};
};

}  // namespace

Outcomes WalkFolders(std::span<const RememberedObject> items, const ChangeRecorder& recorder,
                     const std::function<bool(const char* name)>& begin,
                     const std::function<DWORD(const HeldObject& folder, TreeObserver& observer)>& change) {
    Outcomes outcomes;
    WalkObserver observer(begin);
    for (const RememberedObject& item : items) {
        HeldObject folder;
        observer.SetItem(item.Path());
        const DWORD error = item.Find(folder);
        if (error == ERROR_FILE_INVALID) outcomes.push_back({error, Step::kFindFolderAgain, item.Path()});
        if (error != ERROR_SUCCESS || !folder.IsFolder()) continue;
        if (const DWORD turnError = folder.TakeTurn(); turnError != ERROR_SUCCESS) {
            outcomes.push_back({turnError, Step::kNone, item.Path()});
            continue;
        }
        Outcome outcome = OutcomeOfChange(change(folder, observer), recorder);
        outcome.object = item.Path();
        if (outcome.step == Step::kRecord) outcomes.push_back(outcome);
        if (outcome.step == Step::kRecord || outcome.code == ERROR_OPERATION_ABORTED) break;
    }
    observer.AppendTo(outcomes);
    return outcomes;
}

}  // namespace permora
