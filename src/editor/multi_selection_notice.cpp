#include "editor/multi_selection_notice.h"

#include "resources/resource_ids.h"

namespace permora {

CInfoDlg1::CInfoDlg1(CWnd* ownerWindow) : CDialog(IDD_SELECTION_NOTICE, ownerWindow) {}

bool CInfoDlg1::OnInitDialog() {
    if (!text.empty()) GetDlgItem(IDC_NOTICE_TEXT)->SetWindowText(text);
    return CDialog::OnInitDialog();
}

void CInfoDlg1::OnOK() {
    KeepChoice();
    CDialog::OnOK();
}

void CInfoDlg1::OnCancel() {
    KeepChoice();
    CDialog::OnCancel();
}

void CInfoDlg1::KeepChoice() {
    if (showIntermediateInfo != nullptr && GetDlgItem<CButton>(IDC_DO_NOT_SHOW_AGAIN)->IsChecked())
        *showIntermediateInfo = 0;
}

}  // namespace permora
