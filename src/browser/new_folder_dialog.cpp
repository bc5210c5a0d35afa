#include "browser/new_folder_dialog.h"

#include "resources/resource_ids.h"
#include "security/message_boxes.h"

namespace permora {

CNewFolderDlg::CNewFolderDlg(CWnd* ownerWindow) : CDialog(IDD_NEW_FOLDER, ownerWindow) {}

bool CNewFolderDlg::OnInitDialog() {
    GetDlgItem(IDC_FOLDER_NAME)->SetWindowText(folderName);
    return CDialog::OnInitDialog();
}

void CNewFolderDlg::OnOK() {
    const std::string typed = GetDlgItem(IDC_FOLDER_NAME)->GetWindowText();
    if (typed.empty()) {
        ShowInfoBox(GetSafeHwnd(), "You should specify directory name.");
        return;
    }
    folderName = typed;
    CDialog::OnOK();
}

}  // namespace permora
