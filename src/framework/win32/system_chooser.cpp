#include "framework/win32/system_chooser.h"

#include "framework/modal_window.h"
#include "framework/win32/application.h"
#include "framework/win32/others_disabled.h"
#include "framework/win32/text.h"
#include "platform/api/errors.h"
#include "platform/system_message.h"
#include "platform/windows/code_page.h"

namespace permora::win32 {
namespace {

HWND TopOf(const CWnd& window) {
    return GetAncestor(window.GetSafeHwnd(), GA_ROOT);
}

// The system's number of its error; that of anything else as it is.
DWORD ErrorOf(HRESULT result) {
    return HRESULT_FACILITY(result) == FACILITY_WIN32 ? HRESULT_CODE(result) : static_cast<DWORD>(result);
}

}  // namespace

HRESULT ShowModal(IFileDialog& dialog, CWnd& owner) {
    HWND top = TopOf(owner);
    Win32Application& toolkit = *Win32Application::Current();
    // The system disables the owner itself, and enables it again before its own window goes.
    const OthersDisabled others(top);
    const OwnerDisabler disabled(&owner);
    ++toolkit.openChoosers;
    const HRESULT result = dialog.Show(top);
    --toolkit.openChoosers;
    return result;
}

HRESULT ChosenPath(IFileDialog& dialog, std::string& path) {
    ShellObject<IShellItem> item;
    HRESULT result = dialog.GetResult(reinterpret_cast<IShellItem**>(item.Place()));
    if (FAILED(result)) return result;
    wchar_t* name = nullptr;
    result = item->GetDisplayName(SIGDN_FILESYSPATH, &name);
    if (FAILED(result)) return result;
    const DWORD error = ToAnsi(name, path);
    CoTaskMemFree(name);
    return HRESULT_FROM_WIN32(error);
}

void ReportNoChoice(CWnd& owner, HRESULT result) {
    if (result == HRESULT_FROM_WIN32(ERROR_CANCELLED)) return;
    const std::string text = "Nothing was chosen: " + SystemMessageLine(ErrorOf(result));
    MessageBoxW(TopOf(owner), Wide(text).c_str(), TextOf(TopOf(owner)).c_str(), MB_OK | MB_ICONERROR);
}

}  // namespace permora::win32
