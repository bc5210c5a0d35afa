#include "editor/effective_page.h"

#include "editor/account_picker.h"
#include "editor/required_control.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "resources/resource_ids.h"
#include "security/effective_rights.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

// `text` begins with a small letter.
std::string AsSentence(std::string text) {
    text.front() = static_cast<char>(text.front() - ('a' - 'A'));
    return text + '.';
}

}  // namespace

const MessageMap& CPage4::GetMessageMap() const {
    static const MessageMap kMap =
        MakeMessageMap<CPage4>(CPropertyPage::GetMessageMap(),
                               {
                                   {IDC_CHANGE_EFFECTIVE_ACCOUNT, Notify::kClicked, &CPage4::OnChangeAccount},
                               });
    return kMap;
}

CPage4::CPage4() : CPropertyPage(IDD_EFFECTIVE_PERMISSIONS_PAGE, IDS_EFFECTIVE_PERMISSIONS_TAB) {}

bool CPage4::OnInitDialog() {
    CListCtrl& list = RightsList();
    AccountField().EnableWindow(false);
    list.SetExtendedStyle(ListStyle::kCheckBoxes);
    list.EnableWindow(false);  // the marks are read-only
    for (const AccessRight& right : kAccessRights)
        list.InsertItem(list.GetItemCount(), right.listName);
    return CPropertyPage::OnInitDialog();
}

// On failure, the previous account and its marks stay.
void CPage4::OnChangeAccount() {
    CDlgUsersAndGroups picker(this);
    if (picker.DoModal() != IDOK) return;
    account = picker.result;
    if (ShowRights()) AccountField().SetWindowText(AccountDisplayName(account));
}

bool CPage4::ShowRights() {
    HeldObject object;
    ReadParts parts;
    Outcome outcome = FindItem(place->items.front(), object);
    if (outcome.IsDone()) outcome.code = object.ReadSecurity(DACL_SECURITY_INFORMATION, parts);
    if (outcome.IsDone() && parts.dacl == nullptr) {
        ShowInfoBox(GetSafeHwnd(), "Object's access control list is null (All access is allowed always)");
        return false;
    }
    DWORD rights = 0;
    if (outcome.IsDone()) outcome.code = FindEffectiveRights(parts.dacl, account.RawSid(), rights);
    if (outcome.code == ERROR_NONE_MAPPED)
        ShowErrorBox(GetSafeHwnd(), AsSentence(UnknownGroupsText(account)).c_str());
    else
        ShowOutcome(GetSafeHwnd(), outcome);
    if (!outcome.IsDone()) return false;
    int row = 0;
    for (const AccessRight& right : kAccessRights)
        RightsList().SetCheck(row++, IsEffective(right, rights));
    std::string remarks;
    for (const std::string& remark : RemarksOnRights(parts.dacl, account, rights))
        remarks += (remarks.empty() ? "" : " ") + AsSentence(remark);
    RequiredControl<CWnd>(*this, IDC_EFFECTIVE_REMARK).SetWindowText(remarks);
    return true;
}

CListCtrl& CPage4::RightsList() const {
    return RequiredControl<CListCtrl>(*this, IDC_EFFECTIVE_RIGHTS);
}

CEdit& CPage4::AccountField() const {
    return RequiredControl<CEdit>(*this, IDC_EFFECTIVE_ACCOUNT);
}

}  // namespace permora
