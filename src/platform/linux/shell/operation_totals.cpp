#include "platform/linux/shell/operation_totals.h"

#include <memory>
#include <system_error>
#include <utility>

#include "platform/linux/files/tree_walk.h"
#include "platform/linux/shell/item_finder.h"

namespace permora::host {

namespace {

class CountingThread : public VisitingThread {
  public:
    explicit CountingThread(OperationTotals& counted) : totals(counted) {}
    WalkDecision Visit(const VisitedObject& visited, std::unique_ptr<FolderNotes>& /*notes*/) override {
        return totals.CountObject(visited.object) ? WalkDecision::kDescend : WalkDecision::kStop;
    }

  private:
    OperationTotals& totals;
};

class Counting : public TreeVisitor {
  public:
    explicit Counting(OperationTotals& counted) : totals(counted) {}
    std::unique_ptr<VisitingThread> NewThread() override { return std::make_unique<CountingThread>(totals); }
    // The operation itself reports failures.
    void Fail(DWORD /*error*/, const std::string& /*path*/) override {}

  private:
    OperationTotals& totals;
};

}  // namespace

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
    Counting counting(*this);
    ItemFinder finder;
    for (const std::string& path : paths) {
        FoundItem item;
        if (isGivenUp || finder.Find(path, item) != ERROR_SUCCESS) continue;
        // On one thread: it runs beside the operation.
        if (CountObject(item.object) && item.object.IsFolder()) WalkTree(item.object, nullptr, counting, 1);
    }
    --uncounted;
}

bool OperationTotals::CountObject(const ObjectHandle& object) {
    ++items;
    if (S_ISREG(object.Status().st_mode)) bytes += static_cast<std::uint64_t>(object.Status().st_size);
    return !isGivenUp;
}

}  // namespace permora::host
