#include "shares/new_share_dialog.h"

#include "framework/folder_chooser.h"
#include "framework/long_work.h"
#include "platform/host_path.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

// The name to propose for a share of the folder; empty for a drive's root.
std::string NameOfFolder(const std::string& path) {
    return path.substr(path.rfind('\\') + 1);
}

unsigned int ControlOf(NewShareField field) {
    switch (field) {
        case NewShareField::kName:
            return IDC_SHARE_NAME;
        case NewShareField::kUserLimit:
            return IDC_SHARE_USER_LIMIT;
        default:
            return IDC_SHARE_FOLDER;
    }
}

}  // namespace

const MessageMap& CNewShareDlg::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<CNewShareDlg>(
        CDialog::GetMessageMap(),
        {
            {IDC_CHOOSE_SHARE_FOLDER, Notify::kClicked, &CNewShareDlg::OnChooseFolder},
            {IDC_SHARE_ALL_USERS, Notify::kClicked, &CNewShareDlg::OnUserLimit},
            {IDC_SHARE_SOME_USERS, Notify::kClicked, &CNewShareDlg::OnUserLimit},
        });
    return kMap;
}

CNewShareDlg::CNewShareDlg(CWnd* ownerWindow) : CDialog(IDD_NEW_SHARE, ownerWindow) {}

bool CNewShareDlg::OnInitDialog() {
    GetDlgItem<CButton>(IDC_SHARE_ALL_USERS)->SetCheck(CheckState::kChecked);
    OnUserLimit();
    return CDialog::OnInitDialog();
}

void CNewShareDlg::OnUserLimit() {
    GetDlgItem(IDC_SHARE_USER_LIMIT)->EnableWindow(GetDlgItem<CButton>(IDC_SHARE_SOME_USERS)->IsChecked());
}

void CNewShareDlg::OnChooseFolder() {
    std::string path = Written().folder;
    if (!ChooseFolder(*this, "Choose the folder to share", path)) return;
    GetDlgItem(IDC_SHARE_FOLDER)->SetWindowText(path);
    if (Text(IDC_SHARE_NAME).empty()) GetDlgItem(IDC_SHARE_NAME)->SetWindowText(NameOfFolder(path));
}

void CNewShareDlg::OnOK() {
    const NewShare share = Written();
    const NewShareFault fault = FindNewShareFault(share);
    if (fault.field != NewShareField::kNone) {
        ShowErrorBox(GetSafeHwnd(), fault.text.c_str());
        GetDlgItem(ControlOf(fault.field))->SetFocus();
        return;
    }
    Outcome outcome;
    DoLongWork(*this, [&] { outcome = CreateShare(share); });
    ShowOutcome(GetSafeHwnd(), outcome);
    if (outcome.IsDone()) CDialog::OnOK();
}

// The folder may also be a path of the host.
NewShare CNewShareDlg::Written() const {
    NewShare share;
    if (const std::string folder = Text(IDC_SHARE_FOLDER); !folder.empty())
        share.folder = PathFromArgument(folder.c_str());
    share.name = Text(IDC_SHARE_NAME);
    share.comment = Text(IDC_SHARE_COMMENT);
    share.userLimit = Text(IDC_SHARE_USER_LIMIT);
    share.hasUserLimit = GetDlgItem<CButton>(IDC_SHARE_SOME_USERS)->IsChecked();
    return share;
}

std::string CNewShareDlg::Text(unsigned int id) const {
    return GetDlgItem(id)->GetWindowText();
}

}  // namespace permora
