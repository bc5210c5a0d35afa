#include "platform/tree_size.h"

#include <set>
#include <utility>

#include "platform/api/errors.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/files/tree_walk.h"

namespace permora {
namespace host {
namespace {

class SizeVisitor : public TreeVisitor {
  public:
    SizeVisitor(TreeSizeObserver& reported, TreeSize& counted) : observer(reported), size(counted) {}

    WalkDecision Visit(const ObjectHandle& object, const char* /*name*/, std::size_t /*depth*/) override {
        Count(object);
        return observer.Measured(size) ? WalkDecision::kDescend : WalkDecision::kStop;
    }
    void Fail(DWORD error, const char* /*name*/, std::size_t /*depth*/) override {
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

    TreeSizeObserver& observer;
    TreeSize& size;
    std::set<std::pair<dev_t, ino_t>> severalNames;  // files with more than one name that were counted
};

}  // namespace
}  // namespace host

DWORD MeasureTree(LPCSTR path, TreeSizeObserver& observer, TreeSize& size) {
    host::ObjectHandle object;
    const DWORD error = host::OpenObject(path, object);
    if (error != ERROR_SUCCESS) return error;
    size = {};
    host::SizeVisitor visitor(observer, size);
    if (object.IsFolder())
        host::WalkTree(object, visitor);
    else
        visitor.Visit(object, "", 0);
    return ERROR_SUCCESS;
}

}  // namespace permora
