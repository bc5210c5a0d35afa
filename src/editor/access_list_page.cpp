#include "editor/access_list_page.h"

#include <iterator>
#include <string>
#include <utility>

#include "editor/account_picker.h"
#include "editor/permission_entry_dialog.h"
#include "platform/api/messages.h"
#include "resources/resource_ids.h"
#include "security/access_rows.h"
#include "security/dacl_builder.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

constexpr int kColumnWidths[] = {60, 120, 100, 110, 120};
static_assert(std::size(kColumnWidths) == kAccessRowTitles.size());

constexpr int kNameColumn = 1;

constexpr int kNewEntryScope = 1;  // this folder, subfolders and files

// One line about unusual properties of the list; empty for none.
std::string RemarkOn(const AccessEntryList& list) {
    std::string remark;
    if (!list.IsInCanonicalOrder()) remark = "The entries are not in the usual order.";
    const std::string losses = LossesRemark(list.OtherTypeCount(), list.UnacceptableCount());
    if (!remark.empty() && !losses.empty()) remark += ' ';
    return remark + losses;
}

}  // namespace

const MessageMap& AccessListPage::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<AccessListPage>(
        CPropertyPage::GetMessageMap(), {
                                            {IDC_ADD_ENTRY, Notify::kClicked, &AccessListPage::OnAdd},
                                            {IDC_REMOVE_ENTRY, Notify::kClicked, &AccessListPage::OnRemove},
                                            {IDC_EDIT_ENTRY, Notify::kClicked, &AccessListPage::OnEdit},
                                            {IDC_ACCESS_LIST, Notify::kClick, &AccessListPage::OnListClicked},
                                        });
    return kMap;
}

AccessListPage::AccessListPage(unsigned int pageTemplate, EditScopes scopes)
    : CPropertyPage(pageTemplate, IDS_PERMISSIONS_TAB), editScopes(scopes), library(LoadAccessListLibrary()) {
    if (!library) ShowFatalLastErrorBox(nullptr);
}

bool AccessListPage::OnInitDialog() {
    CListCtrl& list = AccessList();
    for (std::size_t column = 0; column < kAccessRowTitles.size(); ++column)
        list.InsertColumn(static_cast<int>(column), kAccessRowTitles[column], kColumnWidths[column]);
    list.SetExtendedStyle(ListStyle::kFullRowSelect | ListStyle::kLabelTips);
    changed = false;
    EditedList() = {};
    news.Start([this] { RenderNames(); });
    ReadFirstItem();
    return CPropertyPage::OnInitDialog();
}

void AccessListPage::OnDestroy() {
    news.Stop();
    CPropertyPage::OnDestroy();
}

// When reading fails, the controls stay disabled and the rows stay as they were.
void AccessListPage::ReadFirstItem() {
    Enable({IDC_INHERIT_FROM_PARENT, IDC_REPLACE_CHILD_ENTRIES, IDC_ACCESS_LIST, IDC_EDIT_ENTRY,
            IDC_REMOVE_ENTRY},
           false);
    if (!ReadItem()) return;
    readOnlyReason = ReadOnlyReason();
    if (!readOnlyReason.empty()) Enable({IDC_INHERIT_FROM_PARENT, IDC_REPLACE_CHILD_ENTRIES}, false);
    RenderRows();
}

void AccessListPage::RenderRows() {
    CListCtrl& list = AccessList();
    Enable({IDC_ACCESS_LIST, IDC_ADD_ENTRY, IDC_EDIT_ENTRY, IDC_REMOVE_ENTRY}, false);
    list.DeleteAllItems();
    for (const AccessRow& row : AccessRowsOf(EditedList(), AccountNameSoFar)) {
        const int position = list.GetItemCount();
        list.InsertItem(position, row.type);
        list.SetItemText(position, kNameColumn, row.name);
        list.SetItemText(position, 2, row.permission);
        list.SetItemText(position, 3, row.inheritance);
        list.SetItemText(position, 4, row.applyTo);
        list.SetItemData(position, static_cast<std::intptr_t>(row.entryIndex));
    }
    GetDlgItem(IDC_LIST_REMARK)
        ->SetWindowText(readOnlyReason.empty() ? RemarkOn(EditedList()) : readOnlyReason);
    ShowEmptyListText();
    OnRowsRendered();
    Enable({IDC_ADD_ENTRY}, readOnlyReason.empty());
    if (list.GetItemCount() == 0) return;
    list.SetSelected(0, true);
    Enable({IDC_EDIT_ENTRY}, true);
    OnListClicked();
    Enable({IDC_ACCESS_LIST}, true);
    list.SetFocus();
}

// A list may have entries that have no rows.
void AccessListPage::ShowEmptyListText() {
    AccessList().SetEmptyText(EditedList().Entries().empty() ? EmptyListText() : std::string());
}

void AccessListPage::ShowKept(const std::string& text) {
    GetDlgItem(IDC_LIST_KEPT)->SetWindowText(text);
}

void AccessListPage::RenderNames() {
    CListCtrl& list = AccessList();
    const std::vector<AccessRow> rows = AccessRowsOf(EditedList(), AccountNameSoFar);
    if (static_cast<int>(rows.size()) != list.GetItemCount()) return;  // after a failed read
    for (int position = 0; const AccessRow& row : rows)
        list.SetItemText(position++, kNameColumn, row.name);
}

void AccessListPage::OnAdd() {
    CDlgUsersAndGroups picker(this);
    picker.item = Item();
    if (picker.DoModal() != IDOK) return;
    RedrawWindow();
    CDlgPermissions dialog(this);
    dialog.choice.account = picker.result;
    dialog.choice.applyIndex = kNewEntryScope;
    dialog.item = Item();
    if (dialog.DoModal() != IDOK) return;
    RedrawWindow();
    EditedList().AddFromDialog(dialog.choice);
    MarkChanged();
    RenderRows();
}

void AccessListPage::OnEdit() {
    const std::optional<std::size_t> index = SelectedEntry();
    if (!index) {
        ShowInfoBox(GetSafeHwnd(), "Please, select item to edit");
        return;
    }
    const AccessEntry& entry = EditedList().Entries()[*index];
    CDlgPermissions dialog(this);
    dialog.choice = ChoiceOf(entry);
    dialog.inheritedEntry = entry.IsInherited();
    dialog.singleScope = editScopes == EditScopes::kThisObjectOnly;
    dialog.readOnly = !readOnlyReason.empty();
    dialog.item = Item();
    if (dialog.DoModal() != IDOK || dialog.readOnly) return;
    RedrawWindow();
    EditedList().EditEntry(*index, dialog.choice);
    RenderRows();
    MarkChanged();
}

void AccessListPage::OnRemove() {
    const std::optional<std::size_t> index = SelectedEntry();
    if (!index || EditedList().Entries()[*index].IsInherited()) return;
    EditedList().RemoveEntry(*index);
    MarkChanged();
    RenderRows();
}

// An inherited entry cannot be removed.
void AccessListPage::OnListClicked() {
    if (const auto index = SelectedEntry())
        Enable({IDC_REMOVE_ENTRY}, readOnlyReason.empty() && !EditedList().Entries()[*index].IsInherited());
}

void AccessListPage::MarkChanged() {
    SetModified(true);
    changed = true;
    ShowEmptyListText();
}

void AccessListPage::ReadAnew() {
    changed = false;
    ReadFirstItem();
    SetModified(false);
}

UniqueLocal<ACL> AccessListPage::MakeList() {
    UniqueLocal<ACL> dacl;
    ShowOutcome(GetSafeHwnd(), BuildDacl(library.get(), EditedList().Entries(), dacl));
    return dacl;
}

UniqueLocal<ACL> AccessListPage::ListToPreview() {
    if (IsChanged()) return MakeList();
    ShowInfoBox(GetSafeHwnd(), "No permissions were changed here, so applying would leave them as they are.");
    return {};
}

bool AccessListPage::FinishApply() {
    const bool wasChanged = std::exchange(changed, false);
    if (wasChanged) ReadFirstItem();
    return CPropertyPage::OnApply();
}

CListCtrl& AccessListPage::AccessList() const {
    return *GetDlgItem<CListCtrl>(IDC_ACCESS_LIST);
}

std::optional<std::size_t> AccessListPage::SelectedEntry() {
    const CListCtrl& list = AccessList();
    const int row = list.NextSelected(0);
    if (row < 0) return std::nullopt;
    const auto index = static_cast<std::size_t>(list.GetItemData(row));
    if (index >= EditedList().Entries().size()) return std::nullopt;
    return index;
}

bool AccessListPage::IsChecked(unsigned int id) const {
    return GetDlgItem<CButton>(id)->IsChecked();
}

void AccessListPage::SetCheck(unsigned int id, bool checked) {
    GetDlgItem<CButton>(id)->SetCheck(checked ? CheckState::kChecked : CheckState::kClear);
}

void AccessListPage::Enable(std::initializer_list<unsigned int> ids, bool enable) {
    for (const unsigned int id : ids)
        GetDlgItem(id)->EnableWindow(enable);
}

}  // namespace permora
