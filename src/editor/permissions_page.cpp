#include "editor/permissions_page.h"

#include "editor/change_making.h"
#include "editor/list_writing.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "resources/resource_ids.h"
#include "security/apply_dialog.h"
#include "security/message_boxes.h"

namespace permora {

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

bool CPage1::ReadItem() {
    HeldObject held;
    Outcome outcome = FindItem(place->items.front(), held);
    if (outcome.IsDone()) outcome = ReadObjectDacl(held, object);
    ShowOutcome(GetSafeHwnd(), outcome);
    if (!outcome.IsDone()) return false;
    if (object.dacl == nullptr) ShowInfoBox(GetSafeHwnd(), kNullListText);
    ShowInheritance();
    Enable({IDC_REPLACE_CHILD_ENTRIES}, held.IsFolder());
    return true;
}

void CPage1::ShowInheritance() {
    SetCheck(IDC_INHERIT_FROM_PARENT, object.inheritance == DaclInheritance::kFromParent);
    // A drive root has no parent.
    Enable({IDC_INHERIT_FROM_PARENT}, object.inheritance.has_value() && place->kind != PlaceKind::kDrives);
}

void CPage1::OnInheritanceClicked() {
    if (!IsChecked(IDC_INHERIT_FROM_PARENT) && object.entries.HasInheritedEntries()) {
        const int answer =
            MessageBoxA(GetSafeHwnd(),
                        "Would you like to copy inherited entries into this access control list?\n"
                        "Click Yes to copy\n"
                        "Click No to delete inherited entries\n"
                        "Click Cancel to cancel operation",
                        "Inherited entries", MB_YESNOCANCEL | MB_ICONQUESTION);
        if (answer == IDYES) object.entries.CopyInheritedEntries();
        if (answer == IDYES || answer == IDNO) {
            object.entries.RemoveInheritedEntries();
            RenderRows();
        } else {
            SetCheck(IDC_INHERIT_FROM_PARENT, true);
        }
    }
    RedrawWindow();
    MarkChanged();
}

bool CPage1::OnApply() {
    if (!IsChanged()) return FinishApply();
    const UniqueLocal<ACL> dacl = MakeList();
    if (!dacl) return false;
    const DaclInheritance inheritance =
        IsChecked(IDC_INHERIT_FROM_PARENT) ? DaclInheritance::kFromParent : DaclInheritance::kProtected;
    const bool isForTrees = IsChecked(IDC_REPLACE_CHILD_ENTRIES);
    bool mayWrite = true;
    const bool isMade =
        MakeChangeAsking(*this, *changes, isForTrees ? ChangeKind::kReset : ChangeKind::kPermissions,
                         [&](ChangeRecorder& recorder) {
                             mayWrite = WriteListAsking(*this, *place, inheritance, {dacl.get(), dacl.get()},
                                                        object, recorder);
                             if (mayWrite && isForTrees && recorder.Error() == ERROR_SUCCESS)
                                 ResetTrees(recorder);
                         });
    if (!mayWrite) ReadAnew();
    return mayWrite && isMade && FinishApply();
}

void CPage1::ResetTrees(ChangeRecorder& recorder) {
    ApplyDlg dialog(this, recorder);
    dialog.items = place->items;
    dialog.DoModal();
    SetCheck(IDC_REPLACE_CHILD_ENTRIES, false);
}

}  // namespace permora
