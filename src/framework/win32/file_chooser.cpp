#include "framework/file_chooser.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "framework/win32/system_chooser.h"
#include "framework/win32/text.h"
#include "platform/ascii.h"

namespace permora {
namespace {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // no object of the shell's interfaces has a virtual one
// What the user enters becomes the file here and not by the system's rules: by these, only an extension that
// the machine has a program for would count as one.
class FileEntry final : public IFileDialogEvents {
  public:
    explicit FileEntry(std::span<const FileKind> offered) : kinds(offered) {}

    // Meant by what was entered last. Empty when that has no path.
    ChosenFile file;

    // It outlives the dialog, so nobody counts.
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID asked, void** object) override {
        const bool isKnown = asked == IID_IUnknown || asked == IID_IFileDialogEvents;
        *object = isKnown ? this : nullptr;
        return isKnown ? S_OK : E_NOINTERFACE;
    }

    // S_FALSE: the dialog stays.
    HRESULT STDMETHODCALLTYPE OnFileOk(IFileDialog* dialog) override {
        UINT type = 0;  // counted from 1
        ChosenFile entered;
        const HRESULT result = win32::ChosenPath(*dialog, entered.path);
        if (FAILED(result)) return result;
        if (SUCCEEDED(dialog->GetFileTypeIndex(&type)) && type >= 1 && type <= kinds.size())
            entered.kind = type - 1;
        TakeExtension(entered);
        if (!MayReplace(*dialog, entered.path)) return S_FALSE;
        file = std::move(entered);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE OnFolderChanging(IFileDialog*, IShellItem*) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnFolderChange(IFileDialog*) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnSelectionChange(IFileDialog*) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnShareViolation(IFileDialog*, IShellItem*,
                                               FDE_SHAREVIOLATION_RESPONSE*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE OnTypeChange(IFileDialog*) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnOverwrite(IFileDialog*, IShellItem*, FDE_OVERWRITE_RESPONSE*) override {
        return E_NOTIMPL;
    }

  private:
    void TakeExtension(ChosenFile& entered) const {
        const std::string name = InLowerCase(entered.path.substr(entered.path.rfind('\\') + 1));
        const std::size_t point = name.rfind('.');
        if (point == name.npos) {
            entered.path += std::string(".") + kinds[entered.kind].extension;
            return;
        }
        const auto known = std::ranges::find(
            kinds, name.substr(point + 1), [](const FileKind& kind) { return InLowerCase(kind.extension); });
        if (known != kinds.end()) entered.kind = static_cast<std::size_t>(known - kinds.begin());
    }

    static bool MayReplace(IFileDialog& dialog, const std::string& path) {
        if (GetFileAttributesW(win32::Wide(path).c_str()) == INVALID_FILE_ATTRIBUTES &&
            GetLastError() == ERROR_FILE_NOT_FOUND)
            return true;
        HWND window = nullptr;
        win32::ShellObject<IOleWindow> shown;
        if (SUCCEEDED(dialog.QueryInterface(IID_IOleWindow, shown.Place()))) shown->GetWindow(&window);
        const std::wstring question = win32::Wide(path + " already exists.\nDo you want to replace it?");
        return MessageBoxW(window, question.c_str(), win32::TextOf(window).c_str(),
                           MB_YESNO | MB_ICONWARNING | MB_DEFBUTTON2) == IDYES;
    }

    const std::span<const FileKind> kinds;
};
#pragma GCC diagnostic pop

HRESULT OfferKinds(IFileDialog& dialog, std::span<const FileKind> kinds) {
    std::vector<std::pair<std::wstring, std::wstring>> texts;
    for (const auto& [name, extension] : kinds) {
        const std::wstring pattern = win32::Wide(std::string("*.") + extension);
        texts.emplace_back(win32::Wide(name) + L" (" + pattern + L')', pattern);
    }
    std::vector<COMDLG_FILTERSPEC> types;
    for (const auto& [name, pattern] : texts)
        types.push_back({name.c_str(), pattern.c_str()});
    return dialog.SetFileTypes(static_cast<UINT>(types.size()), types.data());
}

HRESULT AskForFile(CWnd& owner, const std::string& title, std::span<const FileKind> kinds, ChosenFile& file) {
    FileEntry entry(kinds);
    win32::ShellObject<IFileDialog> dialog;
    HRESULT result = CoCreateInstance(CLSID_FileSaveDialog, nullptr, CLSCTX_INPROC_SERVER, IID_IFileDialog,
                                      dialog.Place());
    if (FAILED(result)) return result;
    DWORD registration = 0;
    dialog->SetTitle(win32::Wide(title).c_str());
    result = OfferKinds(*dialog.Get(), kinds);
    if (SUCCEEDED(result))
        result = dialog->SetOptions(FOS_FORCEFILESYSTEM | FOS_PATHMUSTEXIST | FOS_NOREADONLYRETURN |
                                    FOS_NOCHANGEDIR);
    if (SUCCEEDED(result)) result = dialog->Advise(&entry, &registration);
    if (FAILED(result)) return result;
    result = win32::ShowModal(*dialog.Get(), owner);
    dialog->Unadvise(registration);
    if (SUCCEEDED(result) && entry.file.path.empty()) return E_UNEXPECTED;
    if (SUCCEEDED(result)) file = std::move(entry.file);
    return result;
}

}  // namespace

bool ChooseFileToSave(CWnd& owner, const std::string& title, std::span<const FileKind> kinds,
                      ChosenFile& file) {
    const HRESULT result = AskForFile(owner, title, kinds, file);
    if (FAILED(result)) win32::ReportNoChoice(owner, result);
    return SUCCEEDED(result);
}

}  // namespace permora
