#include "deletion/failed_deletions.h"

#include <utility>

namespace permora {

std::vector<DeletionTarget> TargetsOf(std::vector<RememberedObject> chosen) {
    std::vector<DeletionTarget> targets;
    targets.reserve(chosen.size());
    for (RememberedObject& object : chosen)
        targets.push_back({std::move(object)});
    return targets;
}

void FailedDeletions::Begin(const DeletionTarget& target) {
    current = target;
    isSettled = false;
}

// What was not come to has failed for the reason that it had before.
void FailedDeletions::End() {
    if (!isSettled && !current.failure.IsDone()) Add(current);
    current = {};
}

// Only what was chosen counts, and not each of the objects in it.
void FailedDeletions::Deleted(const FolderTrail& trail, const std::string& name) {
    if (trail.PathOf(name) != name) return;
    isSettled = true;
    AddResult({ERROR_SUCCESS, Step::kNone, current.object.Path()});
}

void FailedDeletions::Failed(const FolderTrail& trail, Outcome failure) {
    isSettled = true;
    failure.object = PathOf(trail, failure.object);
    const bool isChosen = failure.object == current.object.Path();
    // A folder that could not be removed has been emptied as far as that was possible.
    const bool isEmptied = isChosen && current.extent == DeletionExtent::kEmptyFolder;
    const auto extent = isEmptied || failure.step == Step::kRemoveFolder ? DeletionExtent::kEmptyFolder
                                                                         : DeletionExtent::kWhole;
    if (isChosen || targets.size() == ChangeResults::kMostListed)
        Add({current.object, extent, std::move(failure)});
    else
        Add({{current.object.Start(), failure.object}, extent, failure});
}

void FailedDeletions::AddResult(Outcome outcome) {
    ObjectResult result;
    result.outcome = std::move(outcome);
    results.Add(std::move(result));
}

void FailedDeletions::Add(DeletionTarget target) {
    AddResult(target.failure);
    if (targets.size() < ChangeResults::kMostListed) targets.push_back(std::move(target));
}

std::vector<DeletionTarget> FailedDeletions::TakeFailed() {
    results.TakeFailed();
    return std::exchange(targets, {});
}

// Below the folder in which the objects were chosen.
std::string FailedDeletions::PathOf(const FolderTrail& trail, const std::string& name) const {
    const std::string& path = current.object.Path();
    const std::size_t separator = path.rfind('\\');
    const std::string folder = separator == path.npos ? std::string() : path.substr(0, separator + 1);
    return folder + trail.PathOf(name);
}

}  // namespace permora
