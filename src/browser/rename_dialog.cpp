#include "browser/rename_dialog.h"

#include "browser/shell_items.h"
#include "framework/controls.h"
#include "platform/api/shell.h"
#include "resources/resource_ids.h"

namespace permora {
namespace {

// The part of a file's name that is mostly meant to change.
std::string WithoutExtension(const std::string& name) {
    const std::size_t dot = name.rfind('.');
    return dot != name.npos && dot > 0 ? name.substr(0, dot) : name;
}

}  // namespace

CRenameDlg::CRenameDlg(CWnd* ownerWindow) : CDialog(IDD_RENAME, ownerWindow) {}

bool CRenameDlg::OnInitDialog() {
    if (!folder.empty() && !folder.ends_with('\\')) folder += '\\';
    GetDlgItem(IDC_NEW_NAME)->SetWindowText(oldName);
    CDialog::OnInitDialog();
    if (auto* field = GetDlgItem<CEdit>(IDC_NEW_NAME)) {
        field->SetFocus();
        field->SelectStart(isFile ? WithoutExtension(oldName) : oldName);
    }
    return false;
}

void CRenameDlg::OnOK() {
    newName = GetDlgItem(IDC_NEW_NAME)->GetWindowText();
    if (!newName.empty() && newName != oldName && mayRename()) {
        const std::string files = folder + oldName + '\0';
        RunFileOperation(GetSafeHwnd(), FO_RENAME, files.c_str(), folder + newName);
    }
    CDialog::OnOK();
}

}  // namespace permora
