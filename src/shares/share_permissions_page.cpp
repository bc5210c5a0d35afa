#include "shares/share_permissions_page.h"

#include <utility>

#include "editor/change_making.h"
#include "editor/list_writing.h"
#include "editor/preview_dialog.h"
#include "framework/long_work.h"
#include "platform/api/errors.h"
#include "platform/share_turn.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"
#include "survey/list_enforcement.h"

namespace permora {

CSharePage1::CSharePage1() : AccessListPage(IDD_SHARE_PERMISSIONS_PAGE, EditScopes::kThisObjectOnly) {}

// Nothing can be added to a list that could not be read.
bool CSharePage1::ReadItem() {
    Enable({IDC_ADD_ENTRY}, false);
    ShowKept("Kept " + KeptText(FindShareServer()) + '.');
    if (!ReadShare()) return false;
    SetCheck(IDC_INHERIT_FROM_PARENT, false);
    return true;
}

std::string CSharePage1::EmptyListText() const {
    if (IsChanged()) return "Once applied, nobody may do anything through this share.";
    return share.dacl == nullptr ? "Everyone may do everything through this share: there is no access list."
                                 : "Nobody may do anything through this share: the list is empty.";
}

// A share without a descriptor is given one with a null list at once. This is no change to be undone:
// everyone may do everything as before, and nobody has asked for it.
bool CSharePage1::ReadShare() {
    const std::string& name = names.front();
    share = {};
    ShareSecurity read;
    Outcome outcome = LoadShareDacl(name, read);
    if (outcome.IsDone() && !read.hasDescriptor) {
        ShowInfoBox(GetSafeHwnd(), "There is no security descriptor associated with object.");
        ShareTurn turn;
        outcome = {turn.Take(name)};
        if (outcome.IsDone()) outcome = GiveShareDescriptor(name, Unrecorded());
        if (outcome.IsDone()) outcome = LoadShareDacl(name, read);
    }
    ShowOutcome(GetSafeHwnd(), outcome);
    if (!outcome.IsDone()) return false;
    if (!read.hasDescriptor) {
        ShowInfoBox(GetSafeHwnd(), "The security descriptor can not be associated with object.");
        return false;
    }
    if (read.dacl == nullptr) ShowInfoBox(GetSafeHwnd(), kNullListText);
    share = std::move(read);
    return true;
}

// After a failure, the remaining shares are not written.
bool CSharePage1::OnApply() {
    if (!IsChanged()) return FinishApply();
    const UniqueLocal<ACL> dacl = MakeList();
    if (!dacl) return false;
    Outcome outcome;
    const bool isMade = MakeChangeAsking(*this, *changes, ChangeKind::kShare, [&](ChangeRecorder& recorder) {
        outcome = WriteAsking(dacl.get(), recorder);
    });
    if (outcome.code == ERROR_REVISION_MISMATCH)
        ReadAnew();
    else
        ShowOutcome(GetSafeHwnd(), outcome);
    return isMade && outcome.IsDone() && FinishApply();
}

void CSharePage1::Preview() {
    const UniqueLocal<ACL> dacl = ListToPreview();
    if (!dacl) return;
    const auto make = [&](TreeObserver& observer) {
        return PreviewListOnShares(names, dacl.get(), observer);
    };
    CPreviewDlg(this, CPreviewDlg::Purpose::kShow, make).DoModal();
}

// ERROR_REVISION_MISMATCH: the user does not want to overwrite the list of another program.
Outcome CSharePage1::WriteAsking(PACL dacl, ChangeRecorder& recorder) {
    Outcome outcome;
    const auto write = [&](ShareSecurity* shown) {
        DoLongWork(*this, [&] { outcome = WriteListToShares(names, dacl, shown, recorder); });
    };
    write(&share);
    if (outcome.code == ERROR_REVISION_MISMATCH && MayOverwriteList(GetSafeHwnd(), names.front()))
        write(nullptr);
    return outcome;
}

}  // namespace permora
