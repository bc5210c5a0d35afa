#include "platform/tree_size.h"

#include <memory>
#include <mutex>
#include <set>
#include <utility>

#include "platform/api/errors.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/files/tree_walk.h"

namespace permora {
namespace host {
namespace {

class TreeMeasuring : public TreeVisitor {
  public:
    TreeMeasuring(TreeSizeObserver& reported, TreeSize& counted) : observer(reported), size(counted) {}

    // The walk comes upon so many objects at a time that a lock for each is nothing beside opening it.
    WalkDecision Measure(const ObjectHandle& object) {
        const std::lock_guard lock(guard);
        if (isStopped) return WalkDecision::kStop;
        Count(object);
        isStopped = !observer.Measured(size);
        return isStopped ? WalkDecision::kStop : WalkDecision::kDescend;
    }

    std::unique_ptr<VisitingThread> NewThread() override;

    void Fail(DWORD error, const std::string& /*path*/) override {
        const std::lock_guard lock(guard);
        ++(error == ERROR_NOT_SAME_DEVICE ? size.mounted : size.unread);
    }

  private:
    void Count(const ObjectHandle& object) {
        if (object.IsFolder()) {
            ++size.folders;
            return;
        }
        ++size.files;
        const struct stat& status = object.Status();
        if (!S_ISREG(status.st_mode)) return;
        size.bytes += static_cast<ULONGLONG>(status.st_size);
        if (status.st_nlink > 1 && !severalNames.insert({status.st_dev, status.st_ino}).second) return;
        constexpr ULONGLONG kBlockBytes = 512;  // whatever the file system's own are: stat(2)
        size.bytesOnDisk += kBlockBytes * static_cast<ULONGLONG>(status.st_blocks);
    }

    std::mutex guard;
    TreeSizeObserver& observer;
    TreeSize& size;
    bool isStopped = false;
    std::set<std::pair<dev_t, ino_t>> severalNames;  // files with more than one name that were counted
};

class MeasuringThread : public VisitingThread {
  public:
    explicit MeasuringThread(TreeMeasuring& shared) : measuring(shared) {}
    WalkDecision Visit(const VisitedObject& visited, std::unique_ptr<FolderNotes>& /*notes*/) override {
        return measuring.Measure(visited.object);
    }

  private:
    TreeMeasuring& measuring;
};

std::unique_ptr<VisitingThread> TreeMeasuring::NewThread() {
    return std::make_unique<MeasuringThread>(*this);
}

}  // namespace
}  // namespace host

DWORD MeasureTree(LPCSTR path, TreeSizeObserver& observer, TreeSize& size) {
    host::ObjectHandle object;
    const DWORD error = host::OpenObject(path, object);
    if (error != ERROR_SUCCESS) return error;
    size = {};
    host::TreeMeasuring measuring(observer, size);
    if (object.IsFolder())
        host::WalkTree(object, nullptr, measuring);
    else
        measuring.Measure(object);
    return ERROR_SUCCESS;
}

}  // namespace permora
