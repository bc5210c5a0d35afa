// SHFileOperationA and SHFileOperationW.
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/shell.h"
#include "platform/file_operation_presenter.h"
#include "platform/linux/base/wide_text.h"
#include "platform/linux/shell/file_operation.h"

namespace permora::host {
namespace {

// For processes without anybody to ask. Items in the trash can be restored.
class SilentHost final : public FileOperationHost {
  public:
    bool Report(const FileOperationProgress& /*progress*/) override { return true; }
    FileOperationAnswer Ask(const FileOperationQuestion& question) override {
        return question.kind == FileOperationQuestionKind::kTrash ? FileOperationAnswer::kYes
                                                                  : FileOperationAnswer::kNo;
    }
};

std::string InCodePage(std::string_view text) {
    return std::string(text);
}

std::string InCodePage(std::u16string_view text) {
    return ToAnsi(text);
}

// The texts of a list that an empty text ends.
template <typename Character>
std::vector<std::string> PathsOf(const Character* list) {
    std::vector<std::string> paths;
    while (list != nullptr && *list != 0) {
        const std::basic_string_view<Character> path(list);
        paths.push_back(InCodePage(path));
        list += path.size() + 1;
    }
    return paths;
}

std::optional<FileOperationKind> KindOfFunction(UINT function) {
    switch (function) {
        case FO_COPY:
            return FileOperationKind::kCopy;
        case FO_MOVE:
            return FileOperationKind::kMove;
        case FO_RENAME:
            return FileOperationKind::kRename;
        case FO_DELETE:
            return FileOperationKind::kDelete;
        default:
            return std::nullopt;
    }
}

// `Operation` is SHFILEOPSTRUCTA or SHFILEOPSTRUCTW.
template <typename Operation>
DWORD RequestOf(const Operation& operation, FileOperationRequest& request) {
    const std::optional<FileOperationKind> kind = KindOfFunction(operation.wFunc);
    if (!kind) return ERROR_INVALID_PARAMETER;
    if ((operation.fFlags & ~FOF_ALLOWUNDO) != 0) return ERROR_INVALID_FLAGS;
    request.kind = *kind;
    request.sources = PathsOf(operation.pFrom);
    request.usesTrash = (operation.fFlags & FOF_ALLOWUNDO) != 0;
    if (request.sources.empty()) return ERROR_INVALID_PARAMETER;
    if (*kind == FileOperationKind::kDelete) return ERROR_SUCCESS;
    std::vector<std::string> targets = PathsOf(operation.pTo);
    if (targets.size() != 1) return ERROR_INVALID_PARAMETER;
    if (*kind == FileOperationKind::kRename && request.sources.size() != 1) return ERROR_INVALID_PARAMETER;
    request.target = std::move(targets.front());
    return ERROR_SUCCESS;
}

template <typename Operation>
int RunOperation(Operation* operation) {
    if (operation == nullptr) return static_cast<int>(ERROR_INVALID_PARAMETER);
    operation->fAnyOperationsAborted = FALSE;
    FileOperationRequest request;
    const DWORD error = RequestOf(*operation, request);
    if (error != ERROR_SUCCESS) return static_cast<int>(error);
    FileOperation job(std::move(request));
    if (FileOperationPresenter* presenter = thePresenters.fileOperations) {
        std::string title;
        if (operation->lpszProgressTitle != nullptr) title = InCodePage(operation->lpszProgressTitle);
        presenter->Present(operation->hwnd, title, job);
    } else {
        SilentHost host;
        job.Run(host);
    }
    operation->fAnyOperationsAborted = job.IsIncomplete() ? TRUE : FALSE;
    return static_cast<int>(job.FirstError());
}

}  // namespace
}  // namespace permora::host

int WINAPI SHFileOperationA(LPSHFILEOPSTRUCTA operation) {
    return permora::host::RunOperation(operation);
}

int WINAPI SHFileOperationW(LPSHFILEOPSTRUCTW operation) {
    return permora::host::RunOperation(operation);
}
