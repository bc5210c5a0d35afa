#include "browser/subfolders.h"

#include <cstddef>
#include <span>

#include "browser/drive_rows.h"
#include "browser/folder_rows.h"
#include "platform/api/directory_search.h"
#include "platform/api/errors.h"
#include "resources/resource_ids.h"

namespace permora {
namespace {

// Drives as the browser lists them, each with its label.
class DriveReceiver : public RowReceiver {
  public:
    DriveReceiver(const DriveRows& source, std::vector<Subfolder>& receiving)
        : images(source.Images()), drives(receiving) {}
    bool Add(Row row) override {
        const std::string& label = row.more.front();
        drives.push_back({label.empty() ? row.name : row.name + " (" + label + ')',
                          images[static_cast<std::size_t>(row.image)]});
        return true;
    }
    void ShowCount(int /*count*/) override {}

  private:
    std::span<const unsigned int> images;
    std::vector<Subfolder>& drives;
};

bool IsSubfolder(const WIN32_FIND_DATAA& entry, DotNames dots) {
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 && IsListedName(entry.cFileName, dots);
}

}  // namespace

void Subfolders::Read() {
    if (folder.empty()) {
        DriveRows drives;
        DriveReceiver receiver(drives, found);
        error = drives.List({}, receiver).code;
        return;
    }
    WIN32_FIND_DATAA entry{};
    HANDLE search = FindFirstFileA((folder + (folder.ends_with('\\') ? "*" : "\\*")).c_str(), &entry);
    bool isThere = search != INVALID_HANDLE_VALUE;
    while (isThere && !isStopped) {
        if (IsSubfolder(entry, dots)) found.push_back({entry.cFileName, IDI_FOLDER});
        isThere = FindNextFileA(search, &entry) != FALSE;
    }
    const DWORD reason = isThere ? ERROR_SUCCESS : GetLastError();
    error = reason == ERROR_NO_MORE_FILES ? ERROR_SUCCESS : reason;
    if (search != INVALID_HANDLE_VALUE) FindClose(search);
}

}  // namespace permora
