#include "platform/linux/shell/operation_totals.h"

#include <system_error>
#include <utility>

#include "platform/linux/files/tree_walk.h"
#include "platform/linux/shell/item_finder.h"

namespace permora::host {

class CountingVisitor : public TreeVisitor {
  public:
    explicit CountingVisitor(OperationTotals& counted) : totals(counted) {}

    WalkDecision Visit(const ObjectHandle& object, const char* /*name*/, std::size_t /*depth*/) override {
        ++totals.items;
        if (S_ISREG(object.Status().st_mode))
            totals.bytes += static_cast<std::uint64_t>(object.Status().st_size);
        return totals.isGivenUp ? WalkDecision::kStop : WalkDecision::kDescend;
    }

    // The operation itself reports failures.
    void Fail(DWORD /*error*/, const char* /*name*/, std::size_t /*depth*/) override {}

  private:
    OperationTotals& totals;
};

OperationTotals::~OperationTotals() {
    isGivenUp = true;
    if (counter.joinable()) counter.join();
}

void OperationTotals::AddTrees(std::vector<std::string> paths) {
    ++uncounted;
    {
        const std::lock_guard lock(guard);
        waiting.push_back(std::move(paths));
        if (std::exchange(isCounting, true)) return;
    }
    if (counter.joinable()) counter.join();
    try {
        counter = std::thread([this] { CountAll(); });
    } catch (const std::system_error&) {
        // Without a thread the totals stay unknown. The operation goes on.
    }
}

void OperationTotals::CountAll() {
    for (;;) {
        std::vector<std::string> paths;
        {
            const std::lock_guard lock(guard);
            isCounting = !waiting.empty();
            if (!isCounting) return;
            paths = std::move(waiting.front());
            waiting.pop_front();
        }
        Count(paths);
    }
}

void OperationTotals::Count(const std::vector<std::string>& paths) {
    CountingVisitor visitor(*this);
    ItemFinder finder;
    for (const std::string& path : paths) {
        FoundItem item;
        if (isGivenUp || finder.Find(path, item) != ERROR_SUCCESS) continue;
        if (visitor.Visit(item.object, item.hostName.c_str(), 0) == WalkDecision::kDescend &&
            item.object.IsFolder())
            WalkTree(item.object, visitor);
    }
    --uncounted;
}

}  // namespace permora::host
