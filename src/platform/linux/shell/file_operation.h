// One operation of the shell on files and folders, from its first item to its last.
#pragma once

#include <string>
#include <vector>

#include "platform/file_operation_presenter.h"

namespace permora::host {

// The order of a caller. Paths are those of platform/api/files.h.
struct FileOperationRequest {
    FileOperationKind kind = FileOperationKind::kCopy;
    std::vector<std::string> sources;
    std::string target;      // the folder, or the new path of what is renamed; not for a deletion
    bool usesTrash = false;  // for what is deleted
};

class FileOperation : public FileOperationJob {
  public:
    explicit FileOperation(FileOperationRequest asked) : request(std::move(asked)) {}

    void Run(FileOperationHost& host) override;

    // After its end: the first failure or 0, and whether the user cancelled or passed over anything.
    DWORD FirstError() const { return firstError; }
    bool IsIncomplete() const { return isIncomplete; }

  private:
    FileOperationRequest request;
    DWORD firstError = 0;
    bool isIncomplete = true;  // until it has run
};

}  // namespace permora::host
