// ItemSizes: how much there is to overwrite and to delete.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "deletion/deletion_progress.h"
#include "platform/remembered_object.h"

namespace permora {

class ItemSizes {
  public:
    // Called with what has been found of an item, one call at a time, on any thread. False ends the counting.
    using Observer = std::function<bool(const DeletionSize& soFar)>;

    // The size of an item with all that is in it, never through a link and never into what is mounted there.
    // Only looks; what changes meanwhile is counted or not. Nothing when the item cannot be found, or the
    // counting was ended.
    std::optional<DeletionSize> Measure(const RememberedObject& item, const Observer& observer);

  private:
    const std::string& FolderOf(const RememberedObject& item);

    // The folder that the last item was remembered from, and its path; empty: no path leads there.
    std::shared_ptr<const FolderHandle> lastFolder;
    std::string path;
};

}  // namespace permora
