#include "editor/permissions_page.h"

#include "framework/long_work.h"
#include "platform/api/files.h"
#include "resources/resource_ids.h"
#include "security/apply_dialog.h"
#include "security/inheritance_prompt.h"

namespace permora {
namespace {

bool IsFolder(LPCSTR path) {
    const DWORD attributes = GetFileAttributesA(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

}  // namespace

const MessageMap& CPage1::GetMessageMap() const {
    static const MessageMap kMap =
        MakeMessageMap<CPage1>(AccessListPage::GetMessageMap(),
                               {
                                   {IDC_ACCESS_LIST, Notify::kDoubleClick, &CPage1::OnEdit},
                                   {IDC_INHERIT_FROM_PARENT, Notify::kClicked, &CPage1::OnInheritanceClicked},
                                   {IDC_REPLACE_CHILD_ENTRIES, Notify::kClicked, &CPage1::MarkChanged},
                               });
    return kMap;
}

CPage1::CPage1() : AccessListPage(IDD_PERMISSIONS_PAGE, EditScopes::kAll) {}

bool CPage1::ReadItem(const char* name) {
    HeldObject held;
    if (!FindItem(GetSafeHwnd(), items.front(), held)) return false;
    if (!ReadObjectDacl(GetSafeHwnd(), held, object)) return false;
    ShowInheritance();
    Enable({IDC_REPLACE_CHILD_ENTRIES}, IsFolder(name));
    return true;
}

void CPage1::ShowInheritance() {
    SetCheck(IDC_INHERIT_FROM_PARENT, object.inheritance == DaclInheritance::kFromParent);
    // A drive root has no parent.
    Enable({IDC_INHERIT_FROM_PARENT}, object.inheritance.has_value() && !drivesMode);
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

// Items that fail have told so, and the others are written.
bool CPage1::WriteItems(PACL dacl) {
    const DaclInheritance inheritance =
        IsChecked(IDC_INHERIT_FROM_PARENT) ? DaclInheritance::kFromParent : DaclInheritance::kProtected;
    ItemsWritten written = ItemsWritten::kAll;
    // It is carried to all that inherits below.
    DoLongWork(*this, [&, window = GetSafeHwnd()] {
        written = WriteListToItems(window, items, inheritance, {dacl, dacl}, object.descriptor.get());
    });
    if (written == ItemsWritten::kReadAnew) {
        ReadAnew();
        return false;
    }
    if (IsChecked(IDC_REPLACE_CHILD_ENTRIES)) {
        ApplyDlg dialog(this);
        dialog.items = items;
        dialog.DoModal();
        SetCheck(IDC_REPLACE_CHILD_ENTRIES, false);
    }
    return true;
}

}  // namespace permora
