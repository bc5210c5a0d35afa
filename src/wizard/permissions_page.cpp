#include "wizard/permissions_page.h"

#include <span>
#include <utility>

#include "editor/account_picker.h"
#include "editor/change_making.h"
#include "editor/item_asking.h"
#include "editor/list_writing.h"
#include "editor/multi_selection_notice.h"
#include "editor/required_control.h"
#include "platform/api/messages.h"
#include "resources/resource_ids.h"
#include "security/access_rows.h"
#include "security/dacl_builder.h"
#include "security/distinct_names.h"
#include "security/message_boxes.h"
#include "security/results_dialog.h"
#include "security/volume_asking.h"

namespace permora {
namespace {

constexpr WizardButtons kCannotFinish = WizardButtons::kBack | WizardButtons::kDisabledFinish;

constexpr const char* kNotice =
    "Security Wizard can display information only about one selected item but will apply settings to all "
    "selected items (first selceted item information will be displayed)";

}  // namespace

const MessageMap& CWizardPage3::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<CWizardPage3>(
        CPropertyPage::GetMessageMap(),
        {
            {IDC_WIZARD_ACCOUNTS, Notify::kClick, &CWizardPage3::OnAccountClicked},
            {IDC_WIZARD_ACCOUNTS, Notify::kItemChanged, &CWizardPage3::OnAccountSelected},
            {IDC_WIZARD_RIGHTS, Notify::kItemChanged, &CWizardPage3::OnRightChanged},
            {IDC_WIZARD_ADD_ACCOUNT, Notify::kClicked, &CWizardPage3::OnAdd},
            {IDC_WIZARD_REMOVE_ACCOUNT, Notify::kClicked, &CWizardPage3::OnRemove},
            {IDC_COMBINATIONS, Notify::kClick, &CWizardPage3::OnCombinationClicked},
            {IDC_COMBINATIONS, Notify::kKeyDown, &CWizardPage3::OnCombinationKey},
        });
    return kMap;
}

CWizardPage3::CWizardPage3() : CPropertyPage(IDD_WIZARD_PERMISSIONS_PAGE), library(LoadAccessListLibrary()) {
    if (!library) ShowFatalLastErrorBox(nullptr);
}

bool CWizardPage3::OnInitDialog() {
    SetUpList(IDC_WIZARD_ACCOUNTS, 308, ListStyle::kFullRowSelect | ListStyle::kLabelTips);
    SetUpList(IDC_WIZARD_RIGHTS, 213, ListStyle::kFullRowSelect | ListStyle::kCheckBoxes);
    SetUpList(IDC_COMBINATIONS, 146, ListStyle::kFullRowSelect);
    Enable({IDC_WIZARD_ADD_ACCOUNT, IDC_WIZARD_REMOVE_ACCOUNT}, false);
    ShowNotice();
    CListCtrl& rightsList = List(IDC_WIZARD_RIGHTS);
    for (const AccessRight& right : kAccessRights)
        rightsList.InsertItem(rightsList.GetItemCount(), right.listName);
    CListCtrl& combinations = List(IDC_COMBINATIONS);
    for (const UsableCombination& combination : kUsableCombinations)
        combinations.InsertItem(combinations.GetItemCount(), combination.text);
    Sheet()->SetWizardButtons(kCannotFinish);
    news.Start([this] { RenderNames(); });
    return CPropertyPage::OnInitDialog();
}

void CWizardPage3::OnDestroy() {
    news.Stop();
    CPropertyPage::OnDestroy();
}

void CWizardPage3::RenderNames() {
    CListCtrl& list = List(IDC_WIZARD_ACCOUNTS);
    if (static_cast<int>(rights.Accounts().size()) != list.GetItemCount()) return;  // after a failed read
    DistinctNames names;
    for (std::size_t index = 0; index < rights.Accounts().size(); ++index)
        names.Note(AccountNameSoFar(rights.AccountAt(index)), rights.AccountAt(index));
    for (std::size_t index = 0; index < rights.Accounts().size(); ++index) {
        AccountRecord& account = rights.AccountAt(index);
        list.SetItemText(static_cast<int>(index), 0, names.Of(AccountNameSoFar(account), account));
    }
}

void CWizardPage3::SetUpList(unsigned int id, int width, ListStyle style) {
    CListCtrl& list = List(id);
    list.SetExtendedStyle(style);
    list.InsertColumn(0, "", width);
    list.EnableWindow(false);
}

void CWizardPage3::ShowNotice() {
    if (place->items.size() <= 1 || showIntermediateInfo == nullptr || *showIntermediateInfo == 0) return;
    CInfoDlg1 notice(this);
    notice.showIntermediateInfo = showIntermediateInfo;
    notice.text = kNotice;
    notice.DoModal();
}

bool CWizardPage3::OnSetActive() {
    ShowItem();
    return CPropertyPage::OnSetActive();
}

void CWizardPage3::ShowItem() {
    Sheet()->SetWizardButtons(kCannotFinish);
    isRead = LoadAccounts();
    // Without the first item's list there is nothing to apply to all.
    if (isRead) Sheet()->SetWizardButtons(WizardButtons::kBack | WizardButtons::kFinish);
    const std::string losses = LossesRemark(rights.OtherTypeCount(), rights.UnacceptableCount());
    if (!losses.empty()) ShowInfoBox(GetSafeHwnd(), losses.c_str());
}

bool CWizardPage3::LoadAccounts() {
    CListCtrl& list = List(IDC_WIZARD_ACCOUNTS);
    list.DeleteAllItems();
    Enable({IDC_WIZARD_ACCOUNTS, IDC_WIZARD_RIGHTS, IDC_COMBINATIONS, IDC_WIZARD_ADD_ACCOUNT,
            IDC_WIZARD_REMOVE_ACCOUNT},
           false);
    struct Read {
        AccountRights rights;
        ReadParts shown;
    };
    const RememberedObject& item = place->items.front();
    const auto find = [item](Read& found, PatientWork::Running&) {
        HeldObject object;
        Outcome outcome = FindItem(item, object);
        if (outcome.IsDone()) outcome = LoadAccountsFromItem(object, found.rights, found.shown);
        return outcome;
    };
    rights = {};
    Read read;
    const Outcome outcome = FindOnVolume<Read>(*this, VolumeOfItem(*place, item), read, find);
    if (outcome.IsDone()) {
        rights = std::move(read.rights);
        shown = std::move(read.shown);
    }
    ShowBoxes();
    ShowOutcome(GetSafeHwnd(), outcome);
    if (!outcome.IsDone()) return false;
    if (shown.dacl == nullptr) {
        ShowInfoBox(GetSafeHwnd(), "Object's access control list is null (All access is allowed)");
        return false;
    }
    const std::size_t count = rights.Accounts().size();
    for (std::size_t index = 0; index < count; ++index)
        list.InsertItem(static_cast<int>(index), "");
    RenderNames();
    Enable({IDC_WIZARD_ADD_ACCOUNT}, true);
    if (count == 0) return true;
    SelectAccount(0);
    Enable({IDC_WIZARD_REMOVE_ACCOUNT}, !rights.Accounts().front().Inherits());
    Enable({IDC_WIZARD_ACCOUNTS, IDC_WIZARD_RIGHTS, IDC_COMBINATIONS}, true);
    list.SetFocus();
    return true;
}

void CWizardPage3::SelectAccount(std::size_t index) {
    rights.Select(index);
    List(IDC_WIZARD_ACCOUNTS).SetSelected(static_cast<int>(index), true);
    ShowBoxes();
}

void CWizardPage3::ShowBoxes() {
    updatingChecks = true;
    CListCtrl& list = List(IDC_WIZARD_RIGHTS);
    for (std::size_t right = 0; right < AccountRights::kRights; ++right)
        list.SetCheck(static_cast<int>(right), rights.IsChecked(right));
    updatingChecks = false;
}

void CWizardPage3::OnAccountClicked() {
    const int row = List(IDC_WIZARD_ACCOUNTS).NextSelected(0);
    if (row < 0) {
        rights.Select(std::nullopt);
        ShowBoxes();
        return;
    }
    const auto index = static_cast<std::size_t>(row);
    Enable({IDC_WIZARD_REMOVE_ACCOUNT}, !rights.Accounts()[index].Inherits());
    SelectAccount(index);
}

// The keyboard and the other mouse button select without a click. The page's own selections are already
// shown.
void CWizardPage3::OnAccountSelected(Notification& notification) {
    const bool isShown = rights.Selected() == static_cast<std::size_t>(notification.row);
    if (isShown != List(IDC_WIZARD_ACCOUNTS).IsSelected(notification.row)) OnAccountClicked();
}

void CWizardPage3::OnRightChanged() {
    if (updatingChecks) return;
    const CListCtrl& list = List(IDC_WIZARD_RIGHTS);
    for (std::size_t right = 0; right < AccountRights::kRights; ++right) {
        const bool isChecked = list.GetCheck(static_cast<int>(right));
        if (isChecked == rights.IsChecked(right)) continue;
        rights.ApplyRightChange(right, isChecked);
        ShowBoxes();
        return;
    }
}

void CWizardPage3::OnCombinationClicked() {
    const int row = List(IDC_COMBINATIONS).NextSelected(0);
    if (row < 0 || !rights.Selected()) return;
    rights.ApplyCombination(kUsableCombinations.at(static_cast<std::size_t>(row)).mask);
    ShowBoxes();
}

// The arrow keys only select a combination; Space applies it, as a click does.
void CWizardPage3::OnCombinationKey(Notification& notification) {
    constexpr unsigned int kSpace = 0x20;
    notification.handled = false;
    if (notification.key != kSpace || notification.row < 0) return;
    List(IDC_COMBINATIONS).SetSelected(notification.row, true);
    OnCombinationClicked();
}

void CWizardPage3::OnAdd() {
    CDlgUsersAndGroups picker(this);
    picker.item = place->items.front();
    if (picker.DoModal() != IDOK) return;
    CListCtrl& list = List(IDC_WIZARD_ACCOUNTS);
    const std::size_t index = rights.Add(picker.result);
    if (static_cast<int>(index) == list.GetItemCount()) {
        list.InsertItem(list.GetItemCount(), "");
        RenderNames();
        Enable({IDC_WIZARD_REMOVE_ACCOUNT}, true);
    }
    SelectAccount(index);
    list.EnsureVisible(static_cast<int>(index));
    Enable({IDC_WIZARD_ACCOUNTS, IDC_WIZARD_RIGHTS, IDC_COMBINATIONS}, true);
    List(IDC_WIZARD_RIGHTS).SetFocus();
}

void CWizardPage3::OnRemove() {
    if (!rights.Selected()) return;
    const std::size_t index = *rights.Selected();
    rights.Remove(index);
    List(IDC_WIZARD_ACCOUNTS).DeleteItem(static_cast<int>(index));
    if (!rights.Accounts().empty()) {
        SelectAccount(0);
        return;
    }
    ShowBoxes();
    Enable({IDC_WIZARD_REMOVE_ACCOUNT, IDC_WIZARD_RIGHTS, IDC_COMBINATIONS}, false);
}

bool CWizardPage3::OnWizardFinish() {
    if (!isRead) return false;
    const auto build = [this](ItemKind kind) {
        UniqueLocal<ACL> dacl;
        ShowOutcome(GetSafeHwnd(), BuildDacl(library.get(), rights.Entries(kind), dacl));
        return dacl;
    };
    const UniqueLocal<ACL> forFolders = build(ItemKind::kFolder);
    const UniqueLocal<ACL> forFiles = forFolders ? build(ItemKind::kFile) : nullptr;
    if (!forFiles) return false;
    bool mayWrite = true;
    const auto assign = [&](CWnd& window, std::span<const ObjectPlace> places, ChangeResults& results) {
        const auto make = [&](ChangeRecorder& recorder) {
            mayWrite = WriteListAsking(window, place->items, places, std::nullopt,
                                       {forFolders.get(), forFiles.get()}, shown, recorder, results);
        };
        return MakeChangeAsking(window, *changes, ChangeKind::kAssign, make) && mayWrite;
    };
    ChangeResults results;
    const bool isMade = assign(*this, PlacesOf(place->items, Contents::kNone), results);
    if (!mayWrite) ShowItem();
    if (mayWrite) ShowResults(this, std::move(results), assign);
    return isMade && CPropertyPage::OnWizardFinish();
}

CListCtrl& CWizardPage3::List(unsigned int id) const {
    return RequiredControl<CListCtrl>(*this, id);
}

void CWizardPage3::Enable(std::initializer_list<unsigned int> ids, bool enable) {
    for (const unsigned int id : ids)
        RequiredControl<CWnd>(*this, id).EnableWindow(enable);
}

}  // namespace permora
