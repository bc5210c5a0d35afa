#include "security/folder_walk.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/api/errors.h"
#include "security/object_security.h"

namespace permora {
namespace {

// Adds what is passed over below a place.
class WalkObserver : public TreeObserver {
  public:
    WalkObserver(const std::function<bool(const char* name)>& beginObject, const HeldObject& walked,
                 const std::string& itemPath, const ObjectPlace& walkedPlace, ChangeResults& found)
        : begin(beginObject), folder(walked), item(itemPath), place(walkedPlace), results(found) {}

    bool Begin(const char* name) override { return begin(name); }
    void PassOver(const std::string& path, DWORD error) override {
        // It can have no list, so there is none that it should not have.
        if (error == ERROR_NOT_SUPPORTED) return;
        const std::string below = place.below.empty() ? path : ChildPath(place.below, path);
        Outcome outcome{error, Step::kNone, ChildPath(item, below)};
        if (error == ERROR_NOT_SAME_DEVICE) outcome.step = Step::kPassOverMounted;
        if (error == kHasFurtherNames) outcome.step = Step::kPassOverLinked;
        ObjectPlace passed{place.item, below, ObjectPart::kObject};
        const bool isListed = results.Listed(ResultState::kFailed).size() < ChangeResults::kMostListed;
        if (outcome.step == Step::kNone && isListed) MarkPlace(folder, path, passed);
        results.Add({std::move(passed), std::move(outcome)});
    }

  private:
    const std::function<bool(const char* name)>& begin;
    const HeldObject& folder;
    const std::string& item;
    const ObjectPlace& place;
    ChangeResults& results;
};

// Items that have failed themselves. What keeps the walk from their contents is told already.
std::set<std::size_t> FailedItems(const ChangeResults& results) {
    std::set<std::size_t> items;
    for (const ObjectResult& each : results.Listed(ResultState::kFailed))
        if (each.place.part == ObjectPart::kObject && each.place.below.empty()) items.insert(each.place.item);
    return items;
}

// The failures that a walk below one object has added behind the first `before` ones.
std::set<std::string> PathsBehind(const ChangeResults& results, std::size_t before) {
    std::set<std::string> paths;
    const std::vector<ObjectResult>& failed = results.Listed(ResultState::kFailed);
    for (std::size_t i = before; i < failed.size(); ++i)
        paths.insert(failed[i].place.below);
    return paths;
}

// One run over several places.
class FolderWalks {
  public:
    FolderWalks(std::span<const RememberedObject> all, const ChangeRecorder& changeRecorder,
                const std::function<bool(const char* name)>& beginObject, const TreeWork& treeWork,
                ChangeResults& found)
        : items(all),
          recorder(changeRecorder),
          begin(beginObject),
          work(treeWork),
          results(found),
          failedItems(FailedItems(found)) {}

    // False: no further place may be worked on.
    bool WorkOnContents(const ObjectPlace& place) {
        HeldObject folder;
        const Outcome found = FindPlace(items, place, folder);
        if (found.IsDone()) return !folder.IsFolder() || Walk(folder, place, Step::kChangeContents);
        const bool isAnother = found.code == ERROR_FILE_INVALID;
        if (failedItems.contains(place.item))
            results.Skip(place);
        else
            results.Add(
                {place,
                 {found.code, isAnother ? Step::kFindFolderAgain : Step::kChangeContents, found.object}});
        return true;
    }

    bool WorkOnObject(const ObjectPlace& place) {
        if (IsBelowWalked(place)) {
            if (!failedBelow.contains(place.below)) AddDone(place);
            return true;
        }
        HeldObject object;
        Outcome outcome = FindPlace(items, place, object);
        if (outcome.IsDone()) {
            const std::string path = std::move(outcome.object);
            outcome = OutcomeOfChange(work.object(object), recorder);
            outcome.object = path;
        }
        if (!outcome.IsDone()) {
            if (outcome.code == kHasFurtherNames) outcome.step = Step::kPassOverLinked;
            results.Add({place, outcome});
            return outcome.step != Step::kRecord;
        }
        const std::size_t before = results.Listed(ResultState::kFailed).size();
        if (object.IsFolder() && !Walk(object, place, Step::kNone)) return false;
        walked = object.IsFolder() ? &place : nullptr;
        failedBelow = PathsBehind(results, before);
        if (!failedBelow.contains(place.below)) AddDone(place);
        return true;
    }

  private:
    bool Walk(HeldObject& folder, const ObjectPlace& place, Step failure) {
        const std::string& item = items[place.item].Path();
        WalkObserver observer(begin, folder, item, place, results);
        Outcome outcome{folder.TakeTurn()};
        if (outcome.IsDone()) outcome = OutcomeOfChange(work.below(folder, observer), recorder);
        if (outcome.code == ERROR_OPERATION_ABORTED) return false;
        if (outcome.IsDone() || outcome.code == ERROR_NOT_SUPPORTED) return true;
        if (outcome.step == Step::kNone) outcome.step = failure;
        outcome.object = ChildPath(item, place.below);
        results.Add({place, outcome});
        return outcome.step != Step::kRecord;
    }

    // A walk below an object that was tried again has been to the objects below it, too, unless a folder on
    // the way has failed.
    bool IsBelowWalked(const ObjectPlace& place) const {
        const std::string& below = place.below;
        if (walked == nullptr || walked->item != place.item || !below.starts_with(walked->below + '\\'))
            return false;
        std::size_t end = walked->below.size();
        for (; end != below.npos; end = below.find('\\', end + 1))
            if (failedBelow.contains(below.substr(0, end))) return false;
        return true;
    }

    void AddDone(const ObjectPlace& place) {
        results.Add({place, {ERROR_SUCCESS, Step::kNone, ChildPath(items[place.item].Path(), place.below)}});
    }

    std::span<const RememberedObject> items;
    const ChangeRecorder& recorder;
    const std::function<bool(const char* name)>& begin;
    const TreeWork& work;
    ChangeResults& results;
    const std::set<std::size_t> failedItems;  // before these walks
    const ObjectPlace* walked = nullptr;      // the latest folder that was tried again
    std::set<std::string> failedBelow;        // what has failed there
};

}  // namespace

void WalkFolders(std::span<const RememberedObject> items, std::span<const ObjectPlace> places,
                 const ChangeRecorder& recorder, const std::function<bool(const char* name)>& begin,
                 const TreeWork& work, ChangeResults& results) {
    FolderWalks walks(items, recorder, begin, work, results);
    for (const ObjectPlace& place : places) {
        if (place.part == ObjectPart::kContents && !walks.WorkOnContents(place)) return;
        if (IsSingleBelow(place) && !walks.WorkOnObject(place)) return;
    }
}

}  // namespace permora
