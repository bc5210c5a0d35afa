#include "framework/folder_chooser.h"

#include <shlobj.h>

#include "framework/win32/system_chooser.h"
#include "framework/win32/text.h"
#include "platform/api/errors.h"
#include "platform/host_path.h"

namespace permora {
namespace {

// What is no folder, or has gone, leaves the system's own choice.
void BeginAt(IFileDialog& dialog, const std::string& path) {
    std::string full;
    win32::ShellObject<IShellItem> start;
    if (!path.empty() && FullPathOf(path, full) == ERROR_SUCCESS &&
        SUCCEEDED(
            SHCreateItemFromParsingName(win32::Wide(full).c_str(), nullptr, IID_IShellItem, start.Place())))
        dialog.SetFolder(start.Get());
}

HRESULT AskForFolder(CWnd& owner, const std::string& title, std::string& path) {
    win32::ShellObject<IFileDialog> dialog;
    HRESULT result = CoCreateInstance(CLSID_FileOpenDialog, nullptr, CLSCTX_INPROC_SERVER, IID_IFileDialog,
                                      dialog.Place());
    if (FAILED(result)) return result;
    dialog->SetTitle(win32::Wide(title).c_str());
    result = dialog->SetOptions(FOS_PICKFOLDERS | FOS_FORCEFILESYSTEM | FOS_PATHMUSTEXIST | FOS_NOCHANGEDIR);
    BeginAt(*dialog.Get(), path);
    if (SUCCEEDED(result)) result = win32::ShowModal(*dialog.Get(), owner);
    return SUCCEEDED(result) ? win32::ChosenPath(*dialog.Get(), path) : result;
}

}  // namespace

bool ChooseFolder(CWnd& owner, const std::string& title, std::string& path) {
    const HRESULT result = AskForFolder(owner, title, path);
    if (FAILED(result)) win32::ReportNoChoice(owner, result);
    return SUCCEEDED(result);
}

}  // namespace permora
