#include "platform/linux/shell/item_finder.h"

#include <utility>

#include "platform/linux/files/descriptor_path.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/files/paths.h"

namespace permora::host {
namespace {

DWORD ShowFolder(ObjectHandle handle, HeldFolder& folder) {
    std::string hostPath;
    const DWORD error = HostPathOf(handle.Descriptor(), hostPath);
    if (error == ERROR_SUCCESS) folder = {std::move(handle), PathFromHost(hostPath)};
    return error;
}

}  // namespace

std::string JoinShownPath(std::string_view folder, std::string_view shownName) {
    std::string path(folder);
    if (!path.ends_with('\\')) path += '\\';
    path += shownName;
    return path;
}

std::string FoundItem::ShownPath() const {
    return JoinShownPath(folder->shownPath, EncodeName(hostName));
}

DWORD HoldFolder(const std::string& path, HeldFolder& folder) {
    ObjectHandle handle;
    const bool hasSeparator = path.ends_with('\\') || path.ends_with('/');
    const DWORD error = OpenObject((hasSeparator ? path : path + '\\').c_str(), handle);
    return error == ERROR_SUCCESS ? ShowFolder(std::move(handle), folder) : error;
}

DWORD ItemFinder::FindPlace(const std::string& path, FoundItem& place) {
    const std::size_t nameStart = path.find_last_of("\\/") + 1;
    const std::string_view name = std::string_view(path).substr(nameStart);
    const std::string_view folderText = std::string_view(path).substr(0, nameStart);
    FoundItem found;
    const bool isKnownFolder = lastFolder && !folderText.empty() && folderText == lastFolderText;
    if (isKnownFolder && DecodeName(name, found.hostName)) {
        found.folder = lastFolder;
        place = std::move(found);
        return ERROR_SUCCESS;
    }
    ResolvedPlace resolved;
    HeldFolder folder;
    DWORD error = ResolvePlace(path.c_str(), resolved);
    if (error == ERROR_SUCCESS) error = ShowFolder(std::move(resolved.folder), folder);
    if (error != ERROR_SUCCESS) return error;
    found.hostName = std::move(resolved.hostName);
    found.folder = std::make_shared<const HeldFolder>(std::move(folder));
    // The text before the last component is the folder's path only if that component is a plain name.
    std::string decoded;
    if (DecodeName(name, decoded)) {
        lastFolderText = folderText;
        lastFolder = found.folder;
    }
    place = std::move(found);
    return ERROR_SUCCESS;
}

DWORD ItemFinder::Find(const std::string& path, FoundItem& item) {
    FoundItem found;
    DWORD error = FindPlace(path, found);
    if (error == ERROR_SUCCESS)
        error = ObjectHandle::OpenAt(found.folder->handle.Descriptor(), found.hostName.c_str(), found.object);
    if (error == ERROR_SUCCESS) item = std::move(found);
    return error;
}

}  // namespace permora::host
