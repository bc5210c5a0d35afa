#include "results/report_dialog.h"

#include "editor/account_picker.h"
#include "framework/long_work.h"
#include "platform/api/messages.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

constexpr PlaceButtons kReportPlaces = {IDC_REPORT_ON_SELECTION, IDC_REPORT_ON_FOLDER};

}  // namespace

const MessageMap& CReportDlg::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<CReportDlg>(
        CDialog::GetMessageMap(), {{IDC_REPORT_BROWSE_ACCOUNT, Notify::kClicked, &CReportDlg::OnBrowse}});
    return kMap;
}

CReportDlg::CReportDlg(CWnd* ownerWindow) : CDialog(IDD_REPORT, ownerWindow) {}

bool CReportDlg::OnInitDialog() {
    constexpr int kRemarkWidth = 490;
    ShowPlaces(*this, kReportPlaces, selection, folder);
    Remarks().SetExtendedStyle(ListStyle::kCheckBoxes | ListStyle::kFullRowSelect);
    Remarks().InsertColumn(0, "Remark", kRemarkWidth);
    for (std::size_t i = 0; i < kSurveyRemarkCount; ++i)
        Remarks().InsertItem(static_cast<int>(i), TextOf(static_cast<Remark>(i)));
    return CDialog::OnInitDialog();
}

CListCtrl& CReportDlg::Remarks() const {
    return *GetDlgItem<CListCtrl>(IDC_REPORT_REMARKS);
}

void CReportDlg::OnBrowse() {
    CDlgUsersAndGroups picker(this);
    picker.server = Server();
    if (picker.DoModal() != IDOK) return;
    GetDlgItem(IDC_REPORT_ACCOUNT)->SetWindowText(AccountDisplayName(picker.result));
}

ReportChoice CReportDlg::Choice() const {
    ReportChoice choice{.levels = GetDlgItem(IDC_REPORT_LEVELS)->GetWindowText(),
                        .account = GetDlgItem(IDC_REPORT_ACCOUNT)->GetWindowText(),
                        .server = Server(),
                        .only = {},
                        .members = GetDlgItem<CButton>(IDC_REPORT_MEMBERS)->IsChecked()
                                       ? ReportMembers::kFound
                                       : ReportMembers::kLeftOut};
    for (std::size_t i = 0; i < kSurveyRemarkCount; ++i)
        if (Remarks().GetCheck(static_cast<int>(i))) choice.only.Add(static_cast<Remark>(i));
    return choice;
}

void CReportDlg::OnOK() {
    const ReportChoice choice = Choice();
    std::string problem;
    DoLongWork(*this, [&] { problem = MakeReportRequest(choice, request); });
    if (!problem.empty()) {
        ShowErrorBox(GetSafeHwnd(), problem.c_str());
        return;
    }
    place = ChosenPlace(*this, kReportPlaces);
    CDialog::OnOK();
}

std::string CReportDlg::Server() const {
    return serverOf ? serverOf(ChosenPlace(*this, kReportPlaces)) : std::string();
}

}  // namespace permora
