#include "results/find_dialog.h"

#include <array>

#include "editor/account_picker.h"
#include "framework/long_work.h"
#include "platform/api/messages.h"
#include "resources/resource_ids.h"
#include "security/access_rights.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

constexpr PlaceButtons kFindPlaces = {IDC_FIND_IN_SELECTION, IDC_FIND_IN_FOLDER};
constexpr unsigned int kAccountFields[] = {IDC_FIND_ACCOUNT, IDC_FIND_BROWSE_ACCOUNT};
constexpr unsigned int kEntryFields[] = {IDC_FIND_RIGHTS, IDC_FIND_EFFECT, IDC_FIND_ORIGIN};

constexpr std::array<const char*, 3> kEffects = {"Any", "Allow", "Deny"};
constexpr std::array<const char*, 3> kOrigins = {"Any", "Not inherited", "Inherited"};

template <std::size_t kCount>
void Fill(CWnd& dialog, unsigned int id, const std::array<const char*, kCount>& texts) {
    auto& combo = *dialog.GetDlgItem<CComboBox>(id);
    for (const char* text : texts)
        combo.AddString(text);
    combo.SetCurSel(0);
}

}  // namespace

const MessageMap& CFindDlg::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<CFindDlg>(
        CDialog::GetMessageMap(), {
                                      {IDC_FIND_BROWSE_ACCOUNT, Notify::kClicked, &CFindDlg::OnBrowse},
                                      {IDC_FIND_ONE_ACCOUNT, Notify::kClicked, &CFindDlg::EnableFields},
                                      {IDC_FIND_GONE_ACCOUNTS, Notify::kClicked, &CFindDlg::EnableFields},
                                      {IDC_FIND_ENTRIES, Notify::kClicked, &CFindDlg::EnableFields},
                                      {IDC_FIND_OWNERS, Notify::kClicked, &CFindDlg::EnableFields},
                                  });
    return kMap;
}

CFindDlg::CFindDlg(CWnd* ownerWindow) : CDialog(IDD_FIND, ownerWindow) {}

bool CFindDlg::OnInitDialog() {
    ShowPlaces(*this, kFindPlaces, selection, folder);
    for (const unsigned int id : {unsigned{IDC_FIND_ONE_ACCOUNT}, unsigned{IDC_FIND_ENTRIES}})
        GetDlgItem<CButton>(id)->SetCheck(CheckState::kChecked);
    Fill(*this, IDC_FIND_EFFECT, kEffects);
    Fill(*this, IDC_FIND_ORIGIN, kOrigins);
    constexpr int kRightWidth = 250;
    Rights().SetExtendedStyle(ListStyle::kCheckBoxes | ListStyle::kFullRowSelect);
    Rights().InsertColumn(0, "Right", kRightWidth);
    for (const AccessRight& right : kAccessRights)
        Rights().InsertItem(Rights().GetItemCount(), right.listName);
    EnableFields();
    CDialog::OnInitDialog();
    GetDlgItem(IDC_FIND_ACCOUNT)->SetFocus();
    return false;  // the focus is set
}

bool CFindDlg::IsChecked(unsigned int id) const {
    return GetDlgItem<CButton>(id)->IsChecked();
}

CListCtrl& CFindDlg::Rights() const {
    return *GetDlgItem<CListCtrl>(IDC_FIND_RIGHTS);
}

void CFindDlg::EnableFields() {
    for (const unsigned int id : kAccountFields)
        GetDlgItem(id)->EnableWindow(IsChecked(IDC_FIND_ONE_ACCOUNT));
    for (const unsigned int id : kEntryFields)
        GetDlgItem(id)->EnableWindow(IsChecked(IDC_FIND_ENTRIES));
}

void CFindDlg::OnBrowse() {
    CDlgUsersAndGroups picker(this);
    picker.server = Server();
    if (picker.DoModal() != IDOK) return;
    GetDlgItem(IDC_FIND_ACCOUNT)->SetWindowText(AccountDisplayName(picker.result));
}

std::uint32_t CFindDlg::CheckedRights() const {
    std::uint32_t rights = 0;
    for (std::size_t row = 0; row < kAccessRights.size(); ++row)
        if (Rights().GetCheck(static_cast<int>(row))) rights |= kAccessRights.at(row).bits;
    return rights;
}

FindChoice CFindDlg::Choice() const {
    return {.accounts = IsChecked(IDC_FIND_GONE_ACCOUNTS) ? SearchedAccounts::kGone : SearchedAccounts::kOne,
            .typed = GetDlgItem(IDC_FIND_ACCOUNT)->GetWindowText(),
            .server = Server(),
            .part = IsChecked(IDC_FIND_OWNERS) ? SearchedPart::kOwner : SearchedPart::kEntries,
            .rights = CheckedRights(),
            .effect = static_cast<EntryEffect>(GetDlgItem<CComboBox>(IDC_FIND_EFFECT)->GetCurSel()),
            .origin = static_cast<EntryOrigin>(GetDlgItem<CComboBox>(IDC_FIND_ORIGIN)->GetCurSel())};
}

void CFindDlg::OnOK() {
    const FindChoice choice = Choice();
    std::string problem;
    DoLongWork(*this, [&] { problem = MakeFindRequest(choice, request); });
    if (!problem.empty()) {
        ShowErrorBox(GetSafeHwnd(), problem.c_str());
        return;
    }
    place = ChosenPlace(*this, kFindPlaces);
    CDialog::OnOK();
}

std::string CFindDlg::Server() const {
    return serverOf ? serverOf(ChosenPlace(*this, kFindPlaces)) : std::string();
}

}  // namespace permora
