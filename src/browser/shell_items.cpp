#include "browser/shell_items.h"

#include "security/text_conversion.h"

namespace permora {
namespace {

constexpr const char* kProgressTitle = "File Operation Progress";

}  // namespace

std::string ShellTypeName(const std::string& path) {
    SHFILEINFOA info{};
    return SHGetFileInfoA(path.c_str(), 0, &info, sizeof info, SHGFI_TYPENAME) != 0 ? info.szTypeName : "";
}

bool OpenByShell(HWND owner, const std::string& target) {
    // The shell returns a number as a handle.
    constexpr std::uintptr_t kLastFailure = 32;
    const HINSTANCE result = ShellExecuteA(owner, "open", target.c_str(), nullptr, nullptr, SW_SHOW);
    return reinterpret_cast<std::uintptr_t>(result) > kLastFailure;
}

void RunFileOperation(HWND owner, UINT function, LPCSTR files, const std::string& target) {
    const std::string targets = target + '\0';
    SHFILEOPSTRUCTA operation{};
    operation.hwnd = owner;
    operation.wFunc = function;
    operation.pFrom = files;
    operation.pTo = targets.c_str();
    operation.fFlags = FOF_ALLOWUNDO;
    operation.lpszProgressTitle = kProgressTitle;
    SHFileOperationA(&operation);
}

void RunFileOperation(HWND owner, UINT function, LPCWSTR files, const std::string& target) {
    std::basic_string<WCHAR> targets;
    std::basic_string<WCHAR> title;
    AnsiToWide(target, targets);
    targets += WCHAR{0};
    SHFILEOPSTRUCTW operation{};
    operation.hwnd = owner;
    operation.wFunc = function;
    operation.pFrom = files;
    operation.pTo = targets.c_str();
    operation.fFlags = FOF_ALLOWUNDO;
    operation.lpszProgressTitle = AnsiToWide(kProgressTitle, title);
    SHFileOperationW(&operation);
}

}  // namespace permora
