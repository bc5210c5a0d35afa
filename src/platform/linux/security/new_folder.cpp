// CreateDirectoryA.
#include "platform/api/files.h"
#include "platform/linux/base/failure.h"
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
    ObjectHandle made;
    return security.MakeFolder(place.folder, place.hostName, 0777, made);
}

}  // namespace
}  // namespace permora::host

BOOL WINAPI CreateDirectoryA(LPCSTR path, LPSECURITY_ATTRIBUTES attributes) {
    using namespace permora::host;
    const DWORD error = attributes != nullptr ? ERROR_INVALID_PARAMETER : MakeFolder(path);
    return error == ERROR_SUCCESS ? TRUE : Fail(error);
}
