#include <string>

#include "platform/api/errors.h"
#include "platform/api/shell.h"
#include "platform/linux/base/failure.h"
#include "platform/linux/base/wide_text.h"
#include "platform/linux/files/paths.h"
#include "platform/presenters.h"

namespace permora::host {
namespace {

DWORD ShowProperties(HWND owner, const std::string& path) {
    ObjectHandle object;
    const DWORD error = OpenObject(path.c_str(), object);
    if (error != ERROR_SUCCESS) return error;
    PropertiesPresenter* presenter = thePresenters.properties;
    if (presenter == nullptr) return ERROR_NOT_SUPPORTED;
    presenter->Present(owner, path.c_str());
    return ERROR_SUCCESS;
}

}  // namespace
}  // namespace permora::host

BOOL WINAPI SHObjectProperties(HWND owner, DWORD type, LPCWSTR name, LPCWSTR page) {
    using namespace permora::host;
    if (type != SHOP_FILEPATH || name == nullptr || page != nullptr) return Fail(ERROR_INVALID_PARAMETER);
    const DWORD error = ShowProperties(owner, ToAnsi(name));
    return error == ERROR_SUCCESS ? TRUE : Fail(error);
}
