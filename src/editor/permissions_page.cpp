#include "editor/permissions_page.h"

#include <iterator>
#include <string>

#include "editor/account_picker.h"
#include "editor/permission_entry_dialog.h"
#include "platform/api/files.h"
#include "platform/api/messages.h"
#include "resources/resource_ids.h"
#include "security/access_rows.h"
#include "security/apply_dialog.h"
#include "security/dacl_builder.h"
#include "security/inheritance_prompt.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

constexpr int kColumnWidths[] = {60, 120, 100, 110, 120};
static_assert(std::size(kColumnWidths) == kAccessRowTitles.size());

constexpr int kNewEntryScope = 1;  // this folder, subfolders and files

bool IsFolder(LPCSTR path) {
    const DWORD attributes = GetFileAttributesA(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// An entry as the entry dialog starts with it. A type that is neither allow nor deny never has a row.
PermissionChoice ChoiceOf(const AccessEntry& entry) {
    PermissionChoice choice;
    choice.account = entry.account;
    (entry.IsAllow() ? choice.allowMask : choice.denyMask) = entry.mask;
    choice.applyIndex = ScopeIndexFromText(ScopeTextFromFlags(entry.aceFlags));
    choice.childrenOnly = (entry.aceFlags & NO_PROPAGATE_INHERIT_ACE) != 0;
    return choice;
}

// What is unusual about the list, in one line; empty when nothing is.
std::string RemarkOn(const AccessEntryList& list) {
    std::string remark;
    if (!list.IsInCanonicalOrder()) remark = "The entries are not in the usual order.";
    const std::size_t others = list.OtherTypeCount();
    if (others == 0) return remark;
    if (!remark.empty()) remark += ' ';
    return remark + (others == 1 ? "1 entry of another type is not shown; applying drops it."
                                 : std::to_string(others) +
                                       " entries of other types are not shown; applying drops them.");
}

}  // namespace

const MessageMap& CPage1::GetMessageMap() const {
    static const MessageMap kMap =
        MakeMessageMap<CPage1>(CPropertyPage::GetMessageMap(),
                               {
                                   {IDC_ADD_ENTRY, Notify::kClicked, &CPage1::OnAdd},
                                   {IDC_REMOVE_ENTRY, Notify::kClicked, &CPage1::OnRemove},
                                   {IDC_EDIT_ENTRY, Notify::kClicked, &CPage1::OnEdit},
                                   {IDC_ACCESS_LIST, Notify::kDoubleClick, &CPage1::OnEdit},
                                   {IDC_ACCESS_LIST, Notify::kClick, &CPage1::OnListClicked},
                                   {IDC_INHERIT_FROM_PARENT, Notify::kClicked, &CPage1::OnInheritanceClicked},
                                   {IDC_REPLACE_CHILD_ENTRIES, Notify::kClicked, &CPage1::MarkChanged},
                               });
    return kMap;
}

CPage1::CPage1()
    : CPropertyPage(IDD_PERMISSIONS_PAGE, IDS_PERMISSIONS_TAB), library(LoadAccessListLibrary(nullptr)) {}

bool CPage1::OnInitDialog() {
    CListCtrl& list = AccessList();
    for (std::size_t column = 0; column < kAccessRowTitles.size(); ++column)
        list.InsertColumn(static_cast<int>(column), kAccessRowTitles[column], kColumnWidths[column]);
    list.SetExtendedStyle(ListStyle::kFullRowSelect | ListStyle::kLabelTips);
    changed = false;
    object = {};
    if (!names.empty()) ReadFirstItem();
    return CPropertyPage::OnInitDialog();
}

// Controls that the read leaves disabled stay so when it fails, and the rows keep what they showed.
void CPage1::ReadFirstItem() {
    Enable({IDC_INHERIT_FROM_PARENT, IDC_REPLACE_CHILD_ENTRIES, IDC_ACCESS_LIST, IDC_EDIT_ENTRY,
            IDC_REMOVE_ENTRY},
           false);
    const ItemPlace place = drivesMode ? ItemPlace::kDriveRoot : ItemPlace::kCurrentDirectory;
    if (!ReadObjectDacl(GetSafeHwnd(), names.front(), place, object)) return;
    ShowInheritance();
    Enable({IDC_REPLACE_CHILD_ENTRIES}, IsFolder(names.front()));
    RenderRows();
}

void CPage1::ShowInheritance() {
    SetCheck(IDC_INHERIT_FROM_PARENT, object.inheritance == DaclInheritance::kFromParent);
    // A drive root has no parent.
    Enable({IDC_INHERIT_FROM_PARENT}, object.inheritance.has_value() && !drivesMode);
}

void CPage1::RenderRows() {
    CListCtrl& list = AccessList();
    Enable({IDC_ACCESS_LIST, IDC_ADD_ENTRY, IDC_EDIT_ENTRY, IDC_REMOVE_ENTRY}, false);
    list.DeleteAllItems();
    for (const AccessRow& row : AccessRowsOf(object.entries)) {
        const int position = list.GetItemCount();
        list.InsertItem(position, row.type);
        list.SetItemText(position, 1, row.name);
        list.SetItemText(position, 2, row.permission);
        list.SetItemText(position, 3, row.inheritance);
        list.SetItemText(position, 4, row.applyTo);
        list.SetItemData(position, static_cast<std::intptr_t>(row.entryIndex));
    }
    GetDlgItem(IDC_LIST_REMARK)->SetWindowText(RemarkOn(object.entries));
    Enable({IDC_ADD_ENTRY}, true);
    if (list.GetItemCount() == 0) return;
    list.SetSelected(0, true);
    Enable({IDC_EDIT_ENTRY}, true);
    OnListClicked();
    Enable({IDC_ACCESS_LIST}, true);
    list.SetFocus();
}

void CPage1::OnAdd() {
    CDlgUsersAndGroups picker(this);
    if (picker.DoModal() != IDOK) return;
    RedrawWindow();
    CDlgPermissions dialog(this);
    dialog.choice.account = picker.result;
    dialog.choice.applyIndex = kNewEntryScope;
    if (dialog.DoModal() != IDOK) return;
    RedrawWindow();
    object.entries.AddFromDialog(dialog.choice);
    MarkChanged();
    RenderRows();
}

void CPage1::OnEdit() {
    const std::optional<std::size_t> index = SelectedEntry();
    if (!index) {
        ShowInfoBox(GetSafeHwnd(), "Please, select item to edit");
        return;
    }
    const AccessEntry& entry = object.entries.Entries()[*index];
    CDlgPermissions dialog(this);
    dialog.choice = ChoiceOf(entry);
    dialog.inheritedEntry = entry.IsInherited();
    if (dialog.DoModal() != IDOK) return;
    RedrawWindow();
    object.entries.EditEntry(*index, dialog.choice);
    RenderRows();
    MarkChanged();
}

void CPage1::OnRemove() {
    const std::optional<std::size_t> index = SelectedEntry();
    if (!index || object.entries.Entries()[*index].IsInherited()) return;
    object.entries.RemoveEntry(*index);
    MarkChanged();
    RenderRows();
}

// The user may have chosen another row: an inherited entry cannot be removed.
void CPage1::OnListClicked() {
    if (const auto index = SelectedEntry())
        Enable({IDC_REMOVE_ENTRY}, !object.entries.Entries()[*index].IsInherited());
}

void CPage1::OnInheritanceClicked() {
    if (!IsChecked(IDC_INHERIT_FROM_PARENT)) {
        switch (TurnInheritanceOff(GetSafeHwnd(), object.entries)) {
            case InheritanceOffResult::kCopied:
            case InheritanceOffResult::kRemoved:
                RenderRows();
                break;
            case InheritanceOffResult::kCancelled:
                SetCheck(IDC_INHERIT_FROM_PARENT, true);
                break;
            case InheritanceOffResult::kNothingInherited:
                break;
        }
    }
    RedrawWindow();
    MarkChanged();
}

void CPage1::MarkChanged() {
    SetModified(true);
    changed = true;
}

bool CPage1::OnApply() {
    if (changed) Apply();
    return CPropertyPage::OnApply();
}

// Writes the list to every item and shows what the first one then holds. Items that fail have told so.
void CPage1::Apply() {
    const UniqueLocal<ACL> dacl = BuildDacl(GetSafeHwnd(), library.get(), object.entries);
    if (!dacl) return;
    const DaclInheritance inheritance =
        IsChecked(IDC_INHERIT_FROM_PARENT) ? DaclInheritance::kFromParent : DaclInheritance::kProtected;
    WriteObjectDacl(GetSafeHwnd(), names, inheritance, dacl.get());
    if (IsChecked(IDC_REPLACE_CHILD_ENTRIES)) {
        ApplyDlg dialog(this);
        dialog.names = names;
        dialog.DoModal();
        SetCheck(IDC_REPLACE_CHILD_ENTRIES, false);
    }
    if (!names.empty()) ReadFirstItem();
    changed = false;
}

CListCtrl& CPage1::AccessList() const {
    return *GetDlgItem<CListCtrl>(IDC_ACCESS_LIST);
}

std::optional<std::size_t> CPage1::SelectedEntry() const {
    const CListCtrl& list = AccessList();
    const int row = list.NextSelected(0);
    if (row < 0) return std::nullopt;
    return static_cast<std::size_t>(list.GetItemData(row));
}

bool CPage1::IsChecked(unsigned int id) const {
    return GetDlgItem<CButton>(id)->IsChecked();
}

void CPage1::SetCheck(unsigned int id, bool checked) {
    GetDlgItem<CButton>(id)->SetCheck(checked ? CheckState::kChecked : CheckState::kClear);
}

void CPage1::Enable(std::initializer_list<unsigned int> ids, bool enable) {
    for (const unsigned int id : ids)
        GetDlgItem(id)->EnableWindow(enable);
}

}  // namespace permora
