// CreateDirectoryA.
#include <memory>
#include <optional>
#include <utility>

#include "platform/api/files.h"
#include "platform/linux/base/failure.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/shell/target_folder.h"

namespace permora::host {
namespace {

DWORD MakeFolderAt(const char* path) {
    ResolvedPlace place;
    DWORD error = ResolvePlace(path, place);
    if (error != ERROR_SUCCESS) return error;
    HeldFolder folder;
    folder.handle = std::move(place.folder);
    const std::unique_ptr<TargetFolder> target = TargetFolder::Use(std::move(folder));
    std::unique_ptr<TargetFolder> made;
    std::optional<Clash> clash;
    error = target->CheckName(place.hostName);
    if (error == ERROR_SUCCESS) error = target->FindClash(place.hostName, clash);
    if (error == ERROR_SUCCESS && clash) error = ERROR_ALREADY_EXISTS;
    return error == ERROR_SUCCESS ? target->MakeSubfolder(place.hostName, 0777, made) : error;
}

}  // namespace
}  // namespace permora::host

BOOL WINAPI CreateDirectoryA(LPCSTR path, LPSECURITY_ATTRIBUTES attributes) {
    using namespace permora::host;
    const DWORD error = attributes != nullptr ? ERROR_INVALID_PARAMETER : MakeFolderAt(path);
    return error == ERROR_SUCCESS ? TRUE : Fail(error);
}
