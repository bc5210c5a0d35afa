#include "platform/api/file_control.h"

#include <cstring>
#include <memory>
#include <utility>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/linux/base/failure.h"
#include "platform/linux/base/handle_table.h"
#include "platform/linux/files/attributes.h"
#include "platform/linux/files/file_handle.h"
#include "platform/linux/files/overwritten_file.h"
#include "platform/linux/files/paths.h"

namespace permora::host {
namespace {

// A file that this process alone has open.
class ControlledFile : public SystemObject {
  public:
    ControlledFile(ObjectHandle held, std::shared_ptr<OverwrittenFile> opened)
        : object(std::move(held)), alone(std::move(opened)) {}

    const ObjectHandle& Object() const { return object; }

  private:
    ObjectHandle object;
    std::shared_ptr<OverwrittenFile> alone;
};

enum class WantedState { kClear, kSet };

// ntfs-3g reports success for a change of these flags and leaves them unchanged. Setting them would not
// change the contents on the disk.
DWORD AskForState(const ObjectHandle& object, DWORD flag, WantedState wanted) {
    DWORD attributes = 0;
    const DWORD error = ReadAttributes(object, {}, attributes);
    if (error != ERROR_SUCCESS) return error;
    const bool isSet = (attributes & flag) != 0;
    return isSet == (wanted == WantedState::kSet) ? ERROR_SUCCESS : ERROR_NOT_SUPPORTED;
}

DWORD OpenControlled(const char* path, std::shared_ptr<ControlledFile>& file) {
    ObjectHandle object;
    DWORD error = OpenObject(path, object);
    if (error == ERROR_SUCCESS && object.IsLink()) error = ERROR_CANT_RESOLVE_FILENAME;
    if (error == ERROR_SUCCESS && !S_ISREG(object.Status().st_mode)) error = ERROR_ACCESS_DENIED;
    if (error == ERROR_SUCCESS) error = RefuseReadOnly(object);
    std::shared_ptr<OverwrittenFile> alone;
    if (error == ERROR_SUCCESS) error = OpenAlone(object, alone);
    if (error == ERROR_SUCCESS) file = std::make_shared<ControlledFile>(std::move(object), std::move(alone));
    return error;
}

DWORD SetCompression(HANDLE handle, const void* input, DWORD inputSize) {
    const std::shared_ptr<const ControlledFile> file = OpenHandles().Find<ControlledFile>(handle);
    if (file == nullptr) return ERROR_INVALID_HANDLE;
    WORD format = 0;
    if (input == nullptr || inputSize < sizeof format) return ERROR_INVALID_PARAMETER;
    std::memcpy(&format, input, sizeof format);
    if (format > COMPRESSION_FORMAT_DEFAULT) return ERROR_INVALID_PARAMETER;
    return AskForState(file->Object(), FILE_ATTRIBUTE_COMPRESSED,
                       format == COMPRESSION_FORMAT_NONE ? WantedState::kClear : WantedState::kSet);
}

BOOL AskForEncryption(const char* path, WantedState wanted) {
    ObjectHandle object;
    DWORD error = OpenObject(path, object);
    if (error == ERROR_SUCCESS) error = AskForState(object, FILE_ATTRIBUTE_ENCRYPTED, wanted);
    return error == ERROR_SUCCESS ? TRUE : Fail(error);
}

}  // namespace
}  // namespace permora::host

using namespace permora::host;

HANDLE WINAPI CreateFileA(LPCSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                          DWORD disposition, DWORD /*flags*/, HANDLE likeFile) {
    const bool isOffered = access == (GENERIC_READ | GENERIC_WRITE) && share == 0 && security == nullptr &&
                           disposition == OPEN_EXISTING && likeFile == nullptr;
    std::shared_ptr<ControlledFile> file;
    const DWORD error = isOffered ? OpenControlled(path, file) : ERROR_INVALID_PARAMETER;
    if (error == ERROR_SUCCESS) return OpenHandles().Add(std::move(file));
    SetLastError(error);
    return INVALID_HANDLE_VALUE;
}

BOOL WINAPI DeviceIoControl(HANDLE file, DWORD request, LPVOID input, DWORD inputSize, LPVOID /*output*/,
                            DWORD /*outputSize*/, LPDWORD returned, LPOVERLAPPED overlapped) {
    if (request != FSCTL_SET_COMPRESSION) return Fail(ERROR_INVALID_FUNCTION);
    if (overlapped != nullptr) return Fail(ERROR_INVALID_PARAMETER);
    const DWORD error = SetCompression(file, input, inputSize);
    if (error != ERROR_SUCCESS) return Fail(error);
    if (returned != nullptr) *returned = 0;
    return TRUE;
}

BOOL WINAPI EncryptFileA(LPCSTR path) {
    return AskForEncryption(path, WantedState::kSet);
}

BOOL WINAPI DecryptFileA(LPCSTR path, DWORD reserved) {
    return reserved == 0 ? AskForEncryption(path, WantedState::kClear) : Fail(ERROR_INVALID_PARAMETER);
}
