// What secure deletions have left: exactly these objects, and nothing that comes to their places, can be
// tried again.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "deletion/secure_delete.h"
#include "security/change_results.h"

namespace permora {

// What is to be deleted.
struct DeletionTarget {
    RememberedObject object;
    DeletionExtent extent = DeletionExtent::kWhole;
    Outcome failure = {};  // of the last try
};
std::vector<DeletionTarget> TargetsOf(std::vector<RememberedObject> chosen);

// The places of its results are those of the targets, which have none but their item.
class FailedDeletions {
  public:
    // Around the deletion of a target, also of one that is left out because the user has stopped the run.
    void Begin(const DeletionTarget& target);
    void End();
    // In between, the calls of SecureDeleteHost, with its trail.
    void Deleted(const FolderTrail& trail, const std::string& name);
    void Failed(const FolderTrail& trail, Outcome failure);

    // Objects that were chosen, or have failed.
    const ChangeResults& Results() const { return results; }
    // The same without the listed failures, whose targets are handed over.
    std::vector<DeletionTarget> TakeFailed();

  private:
    void AddResult(Outcome outcome);
    void Add(DeletionTarget target);
    std::string PathOf(const FolderTrail& trail, const std::string& name) const;

    ChangeResults results;
    std::vector<DeletionTarget> targets;  // of the listed failures, in their order
    DeletionTarget current;
    bool isSettled = false;  // something has become of it
};

}  // namespace permora
