#include "platform/linux/shell/file_operation.h"

#include <fcntl.h>
#include <stdio.h>

#include <cerrno>

#include "platform/api/errors.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/shell/operation_talk.h"

namespace permora::host {
namespace {

DWORD RenameWithin(const FileOperationRequest& request) {
    if (request.kind != FileOperationKind::kRename) return ERROR_NOT_SUPPORTED;
    ResolvedPlace from;
    ResolvedPlace to;
    DWORD error = ResolvePlace(request.sources.front().c_str(), from);
    if (error == ERROR_SUCCESS) error = ResolvePlace(request.target.c_str(), to);
    if (error != ERROR_SUCCESS) return error;
    if (!from.folder.IsSameObject(to.folder)) return ERROR_INVALID_NAME;
    const int folder = from.folder.Descriptor();
    const bool isDone =
        renameat2(folder, from.hostName.c_str(), folder, to.hostName.c_str(), RENAME_NOREPLACE) == 0;
    return isDone ? ERROR_SUCCESS : ErrorFromErrno(errno);
}

}  // namespace

void FileOperation::Run(FileOperationHost& host) {
    OperationTalk talk(host, request.kind);
    for (const std::string& source : request.sources) {
        DWORD error = RenameWithin(request);
        while (error != ERROR_SUCCESS &&
               talk.Fails({.path = source}, error) == OperationTalk::AfterFailure::kRetry)
            error = RenameWithin(request);
        if (!talk.GoesOn()) break;
    }
    firstError = talk.FirstError();
    isIncomplete = talk.IsIncomplete();
}

}  // namespace permora::host
