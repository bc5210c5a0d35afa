#include "editor/owner_page.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <span>
#include <utility>

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

Outcomes ApplyToItems(std::span<const RememberedObject> items, PSID newOwner) {
    Outcomes failures;
    for (const RememberedObject& item : items) {
        HeldObject object;
        Outcome outcome = FindItem(item, object);
        if (outcome.IsDone()) outcome.code = object.WriteOwner(newOwner, Unrecorded());
        if (!outcome.IsDone()) failures.push_back(outcome);
    }
    return failures;
}

// Objects in a tree that cannot be changed are left as they are.
Outcomes ApplyBelow(std::span<const RememberedObject> items, PSID newOwner) {
    std::atomic<bool> isStopped = false;  // the program ends
    const StoppableWork stoppable([&] { isStopped = true; });
    return WalkFolders(
        items, [&](const char* /*name*/) { return !isStopped; },
        [&](const HeldObject& folder, TreeObserver& observer) {
            TreeCounts counts;
            return folder.SetOwnersBelow(newOwner, LinkedFiles::kPassOver, Unrecorded(), observer, counts);
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
    changed = false;
    // A copy, since Apply reads the candidates anew.
    if (row >= 0) Apply(AccountRecord(candidates[static_cast<std::size_t>(row)]).RawSid());
    return CPropertyPage::OnApply();
}

void CPage3::Apply(PSID newOwner) {
    const bool isForTrees = TreeBox().IsChecked();
    Outcomes outcomes;
    DoLongWork(*this, [&] {
        outcomes = ApplyToItems(place->items, newOwner);
        if (isForTrees) std::ranges::move(ApplyBelow(place->items, newOwner), std::back_inserter(outcomes));
    });
    ShowOutcomes(GetSafeHwnd(), outcomes);
    TreeBox().SetCheck(CheckState::kClear);
    Fill();
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
