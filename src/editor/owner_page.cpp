#include "editor/owner_page.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <span>
#include <utility>

#include "editor/change_making.h"
#include "editor/required_control.h"
#include "framework/long_work.h"
#include "framework/stoppable_work.h"
#include "platform/api/errors.h"
#include "resources/resource_ids.h"
#include "security/folder_walk.h"
#include "security/message_boxes.h"
#include "security/owner_candidates.h"

namespace permora {
namespace {

constexpr int kColumnWidth = 500;

Outcomes ApplyToItems(std::span<const RememberedObject> items, PSID newOwner, ChangeRecorder& recorder) {
    Outcomes failures;
    for (const RememberedObject& item : items) {
        HeldObject object;
        Outcome outcome = FindItem(item, object);
        if (outcome.IsDone()) {
            outcome = OutcomeOfChange(object.WriteOwner(newOwner, recorder), recorder);
            outcome.object = item.Path();
        }
        if (!outcome.IsDone()) failures.push_back(outcome);
        if (outcome.step == Step::kRecord) break;
    }
    return failures;
}

// Objects in a tree that cannot be changed are left as they are.
Outcomes ApplyBelow(std::span<const RememberedObject> items, PSID newOwner, ChangeRecorder& recorder) {
    std::atomic<bool> isStopped = false;  // the program ends
    const StoppableWork stoppable([&] { isStopped = true; });
    return WalkFolders(
        items, recorder, [&](const char* /*name*/) { return !isStopped; },
        [&](const HeldObject& folder, TreeObserver& observer) {
            TreeCounts counts;
            return folder.SetOwnersBelow(newOwner, LinkedFiles::kPassOver, recorder, observer, counts);
        });
}

}  // namespace

const MessageMap& CPage3::GetMessageMap() const {
    static const MessageMap kMap =
        MakeMessageMap<CPage3>(CPropertyPage::GetMessageMap(),
                               {
                                   {IDC_OWNER_CANDIDATES, Notify::kClick, &CPage3::OnCandidateClicked},
                                   {IDC_OWNER_CANDIDATES, Notify::kItemChanged, &CPage3::OnCandidateSelected},
                               });
    return kMap;
}

CPage3::CPage3() : CPropertyPage(IDD_OWNER_PAGE, IDS_OWNER_TAB) {}

bool CPage3::OnInitDialog() {
    CListCtrl& list = CandidateList();
    OwnerField().EnableWindow(false);
    list.SetExtendedStyle(ListStyle::kFullRowSelect);
    list.InsertColumn(0, "", kColumnWidth);
    changed = false;
    news.Start([this] { RenderNames(); });
    Fill();
    return CPropertyPage::OnInitDialog();
}

void CPage3::OnDestroy() {
    news.Stop();
    CPropertyPage::OnDestroy();
}

// If the candidates cannot be found, the list and the field stay as they were.
void CPage3::Fill() {
    OwnerCandidates found = FindOwnerCandidates();
    ShowOutcomes(GetSafeHwnd(), found.failures);
    if (!found.accounts) return;
    candidates = std::move(*found.accounts);
    CListCtrl& list = CandidateList();
    list.DeleteAllItems();
    for (AccountRecord& candidate : candidates)
        list.InsertItem(list.GetItemCount(), AccountNameSoFar(candidate));
    ShowOwner();
}

void CPage3::RenderNames() {
    for (std::size_t row = 0; row < candidates.size(); ++row)
        CandidateList().SetItemText(static_cast<int>(row), 0, AccountNameSoFar(candidates[row]));
    if (owner.sid) OwnerField().SetWindowText(AccountNameSoFar(owner));
}

void CPage3::ShowOwner() {
    HeldObject object;
    DWORD error = place->items.front().Find(object);
    if (error == ERROR_SUCCESS) error = ReadObjectOwner(object, owner);
    if (error == ERROR_SUCCESS)
        OwnerField().SetWindowText(AccountNameSoFar(owner));
    else
        ShowOutcome(GetSafeHwnd(), {error, Step::kReadOwner});
}

void CPage3::OnCandidateClicked() {
    SetModified(true);
    changed = true;
}

// The keyboard selects without a click.
void CPage3::OnCandidateSelected(Notification& notification) {
    if (CandidateList().IsSelected(notification.row)) OnCandidateClicked();
}

bool CPage3::OnApply() {
    const int row = changed ? CandidateList().NextSelected(0) : -1;
    // A copy, since Apply reads the candidates anew.
    if (row >= 0 && !Apply(AccountRecord(candidates[static_cast<std::size_t>(row)]).RawSid())) return false;
    changed = false;
    return CPropertyPage::OnApply();
}

bool CPage3::Apply(PSID newOwner) {
    const bool isForTrees = TreeBox().IsChecked();
    const auto apply = [&](ChangeRecorder& recorder) {
        Outcomes outcomes;
        DoLongWork(*this, [&] {
            outcomes = ApplyToItems(place->items, newOwner, recorder);
            if (!isForTrees || recorder.Error() != ERROR_SUCCESS) return;
            std::ranges::move(ApplyBelow(place->items, newOwner, recorder), std::back_inserter(outcomes));
        });
        ShowOutcomes(GetSafeHwnd(), outcomes);
    };
    if (!MakeChangeAsking(*this, *changes, ChangeKind::kOwner, apply)) return false;
    TreeBox().SetCheck(CheckState::kClear);
    Fill();
    return true;
}

CListCtrl& CPage3::CandidateList() const {
    return RequiredControl<CListCtrl>(*this, IDC_OWNER_CANDIDATES);
}

CEdit& CPage3::OwnerField() const {
    return RequiredControl<CEdit>(*this, IDC_OWNER_NAME);
}

CButton& CPage3::TreeBox() const {
    return RequiredControl<CButton>(*this, IDC_REPLACE_CHILD_OWNERS);
}

}  // namespace permora
