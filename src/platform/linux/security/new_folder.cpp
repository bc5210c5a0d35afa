// CreateDirectoryA.
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/api/files.h"
#include "platform/linux/base/failure.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/security/new_object.h"

namespace permora::host {
namespace {

DWORD MakeFolder(const char* path) {
    ResolvedPlace place;
    NewObjectSecurity security;
    DWORD error = ResolvePlace(path, place);
    if (error == ERROR_SUCCESS) error = NewObjectSecurity::Of(place.folder, security);
    if (error != ERROR_SUCCESS) return error;
    const int folder = place.folder.Descriptor();
    if (mkdirat(folder, place.hostName.c_str(), 0777) != 0) return ErrorFromErrno(errno);
    ObjectHandle made;
    error = ObjectHandle::OpenAt(folder, place.hostName.c_str(), made);
    // Something else may have taken its place by now: then it is not ours to change, nor to remove.
    if (error == ERROR_SUCCESS && !made.IsFolder()) return ERROR_DIRECTORY;
    if (error == ERROR_SUCCESS) error = security.Give(made);
    if (error != ERROR_SUCCESS) unlinkat(folder, place.hostName.c_str(), AT_REMOVEDIR);
    return error;
}

}  // namespace
}  // namespace permora::host

BOOL WINAPI CreateDirectoryA(LPCSTR path, LPSECURITY_ATTRIBUTES attributes) {
    using namespace permora::host;
    const DWORD error = attributes != nullptr ? ERROR_INVALID_PARAMETER : MakeFolder(path);
    return error == ERROR_SUCCESS ? TRUE : Fail(error);
}
