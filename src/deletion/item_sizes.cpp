#include "deletion/item_sizes.h"

#include "platform/api/errors.h"
#include "platform/change_recorder.h"
#include "platform/held_object.h"
#include "platform/tree_size.h"

namespace permora {
namespace {

class Measuring : public TreeSizeObserver {
  public:
    Measuring(const RememberedObject& item, const ItemSizes::Observer& shown)
        : isFolder(item.Kind() == FolderEntryKind::kFolder), observer(shown) {}

    bool Measured(const TreeSize& soFar) override { return !(isEnded = isEnded || !observer(SizeOf(soFar))); }
    DeletionSize SizeOf(const TreeSize& size) const {
        return {size.bytes, size.files + size.folders + (isFolder ? 1 : 0)};
    }

    bool isEnded = false;

  private:
    const bool isFolder;
    const ItemSizes::Observer& observer;
};

}  // namespace

const std::string& ItemSizes::FolderOf(const RememberedObject& item) {
    if (item.Start() == lastFolder) return path;
    lastFolder = item.Start();
    path.clear();
    HeldObject folder;
    ChangedTop top;
    if (lastFolder && lastFolder->HoldObject("", folder) == ERROR_SUCCESS &&
        folder.FindTop(top) == ERROR_SUCCESS)
        path = top.path + (top.path.ends_with('\\') ? "" : "\\");
    return path;
}

std::optional<DeletionSize> ItemSizes::Measure(const RememberedObject& item, const Observer& observer) {
    if (item.Error() != ERROR_SUCCESS) return DeletionSize();  // nothing of it will be deleted
    const std::string& folder = FolderOf(item);
    if (item.Start() && folder.empty()) return std::nullopt;
    Measuring measuring(item, observer);
    TreeSize size;
    const DWORD error = MeasureTree((folder + item.Path()).c_str(), measuring, size);
    if (error != ERROR_SUCCESS || measuring.isEnded) return std::nullopt;
    return measuring.SizeOf(size);
}

}  // namespace permora
