#include "platform/tree_size.h"

#include <memory>
#include <utility>
#include <vector>

#include "platform/windows/folder_entry.h"
#include "platform/windows/held_object_inside.h"
#include "platform/windows/privileges.h"

namespace permora {
namespace {

// Every folder on the way down is held open, so nothing that is swapped meanwhile leads elsewhere.
class TreeMeasuring {
  public:
    TreeMeasuring(TreeSizeObserver& reported, TreeSize& counted) : observer(reported), size(counted) {}

    void Walk(UniqueHandle top) {
        Enter(std::move(top));
        while (!open.empty()) {
            FoundEntry entry;
            const DWORD error = open.back()->Next(entry);
            if (error == ERROR_SUCCESS) {
                if (!Count(entry)) return;
                continue;
            }
            if (error != ERROR_NO_MORE_FILES) ++size.unread;
            open.pop_back();
        }
    }

  private:
    void Enter(UniqueHandle folder) { open.push_back(std::make_unique<FolderListing>(std::move(folder))); }

    bool Count(const FoundEntry& entry) {
        if (entry.kind == FolderEntryKind::kFile) size.bytes += entry.size;
        ++(entry.kind == FolderEntryKind::kFolder ? size.folders : size.files);
        if (!observer.Measured(size)) return false;
        if (entry.kind != FolderEntryKind::kFolder) return true;
        constexpr OpenRequest kListed = {FILE_LIST_DIRECTORY | FILE_READ_ATTRIBUTES, kShareAll,
                                         FILE_DIRECTORY_FILE | FILE_OPEN_FOR_BACKUP_INTENT};
        UniqueHandle below;
        FILE_ATTRIBUTE_TAG_INFO tag{};
        DWORD error = WithPrivileges(
            kReadingPrivileges, [&] { return OpenIn(open.back()->Folder(), entry.name, kListed, below); });
        if (error == ERROR_SUCCESS) error = TagOf(below.get(), tag);
        if (error != ERROR_SUCCESS)
            ++size.unread;
        else if (KindOfTag(tag) == FolderEntryKind::kFolder)
            Enter(std::move(below));
        return true;
    }

    TreeSizeObserver& observer;
    TreeSize& size;
    std::vector<std::unique_ptr<FolderListing>> open;  // from the measured folder down
};

}  // namespace

DWORD MeasureTree(LPCSTR path, TreeSizeObserver& observer, TreeSize& size) {
    std::wstring verbatim;
    DWORD error = ToVerbatimPath(path, verbatim);
    if (error != ERROR_SUCCESS) return error;
    HANDLE found = CreateFileW(verbatim.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                               FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (found == INVALID_HANDLE_VALUE) return GetLastError();
    UniqueHandle object(found);
    FILE_ATTRIBUTE_TAG_INFO tag{};
    error = TagOf(object.get(), tag);
    if (error != ERROR_SUCCESS) return error;
    size = {};
    const FolderEntryKind kind = KindOfTag(tag);
    if (kind == FolderEntryKind::kFolder) {
        UniqueHandle listed;
        error = WithPrivileges(kReadingPrivileges, [&] {
            return OpenAgain(object.get(), FILE_LIST_DIRECTORY | FILE_READ_ATTRIBUTES, listed);
        });
        if (error == ERROR_SUCCESS)
            TreeMeasuring(observer, size).Walk(std::move(listed));
        else
            ++size.unread;
        return ERROR_SUCCESS;
    }
    LARGE_INTEGER bytes{};
    if (kind == FolderEntryKind::kFile && GetFileSizeEx(object.get(), &bytes) != FALSE)
        size.bytes = static_cast<ULONGLONG>(bytes.QuadPart);
    size.files = 1;
    observer.Measured(size);
    return ERROR_SUCCESS;
}

}  // namespace permora
