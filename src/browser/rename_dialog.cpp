#include "browser/rename_dialog.h"

#include "browser/shell_items.h"
#include "platform/api/shell.h"
#include "resources/resource_ids.h"

namespace permora {

CRenameDlg::CRenameDlg(CWnd* ownerWindow) : CDialog(IDD_RENAME, ownerWindow) {}

bool CRenameDlg::OnInitDialog() {
    if (!folder.empty() && !folder.ends_with('\\')) folder += '\\';
    GetDlgItem(IDC_NEW_NAME)->SetWindowText(oldName);
    return CDialog::OnInitDialog();
}

void CRenameDlg::OnOK() {
    const std::string newName = GetDlgItem(IDC_NEW_NAME)->GetWindowText();
    if (!newName.empty() && newName != oldName && mayRename()) {
        const std::string files = folder + oldName + '\0';
        RunFileOperation(GetSafeHwnd(), FO_RENAME, files.c_str(), folder + newName);
    }
    CDialog::OnOK();
}

}  // namespace permora
