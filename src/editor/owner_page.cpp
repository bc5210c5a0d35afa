#include "editor/owner_page.h"

#include <algorithm>
#include <atomic>
#include <span>
#include <utility>

#include "editor/account_picker.h"
#include "editor/change_making.h"
#include "editor/item_asking.h"
#include "editor/preview_dialog.h"
#include "editor/required_control.h"
#include "framework/long_work.h"
#include "framework/stoppable_work.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "resources/resource_ids.h"
#include "security/distinct_names.h"
#include "security/folder_walk.h"
#include "security/message_boxes.h"
#include "security/owner_candidates.h"
#include "security/results_dialog.h"
#include "security/volume_asking.h"

namespace permora {
namespace {

constexpr int kColumnWidth = 500;

constexpr const char* kOthersNeedPrivilege =
    "Only who holds the privilege to restore files gives them to others.";

void ApplyToItems(std::span<const RememberedObject> items, std::span<const ObjectPlace> places, PSID newOwner,
                  ChangeRecorder& recorder, ChangeResults& results) {
    for (const ObjectPlace& place : places) {
        if (place.part != ObjectPart::kObject || IsSingleBelow(place)) continue;
        HeldObject object;
        Outcome outcome = FindPlace(items, place, object);
        if (outcome.IsDone()) {
            outcome = OutcomeOfChange(object.WriteOwner(newOwner, recorder), recorder);
            outcome.object = items[place.item].Path();
        }
        results.Add({place, outcome});
        if (outcome.step == Step::kRecord) break;
    }
}

// A file that may belong elsewhere is left alone, as by the walk.
DWORD ApplyToObject(const HeldObject& object, PSID newOwner, ChangeRecorder& recorder) {
    bool hasSeveralNames = false;
    if (!object.IsFolder())
        if (const DWORD error = object.HasSeveralNames(hasSeveralNames); error != ERROR_SUCCESS) return error;
    return hasSeveralNames ? kHasFurtherNames : object.WriteOwner(newOwner, recorder);
}

void ApplyBelow(std::span<const RememberedObject> items, std::span<const ObjectPlace> places, PSID newOwner,
                ChangeRecorder& recorder, ChangeResults& results) {
    std::atomic<bool> isStopped = false;  // the program ends
    const StoppableWork stoppable([&] { isStopped = true; });
    const auto applyBelow = [&](const HeldObject& folder, TreeObserver& observer) {
        TreeCounts counts;
        return folder.SetOwnersBelow(newOwner, LinkedFiles::kPassOver, TreeListMode::kWrite, recorder,
                                     observer, counts);
    };
    const auto apply = [&](const HeldObject& object) { return ApplyToObject(object, newOwner, recorder); };
    WalkFolders(
        items, places, recorder, [&](const char* /*name*/) { return !isStopped; },
        {.below = applyBelow, .object = apply}, results);
}

}  // namespace

const MessageMap& CPage3::GetMessageMap() const {
    static const MessageMap kMap =
        MakeMessageMap<CPage3>(CPropertyPage::GetMessageMap(),
                               {
                                   {IDC_OWNER_CANDIDATES, Notify::kClick, &CPage3::OnCandidateClicked},
                                   {IDC_OWNER_CANDIDATES, Notify::kItemChanged, &CPage3::OnCandidateSelected},
                                   {IDC_OTHER_OWNER, Notify::kClicked, &CPage3::OnOtherAccount},
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
    others.clear();
    owner = {};
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
    OfferChanges(found.isAnyoneAllowed);
    if (!found.accounts) return;
    candidates.clear();
    CandidateList().DeleteAllItems();
    for (const AccountRecord& account : *found.accounts)
        AddCandidate(account);
    for (const AccountRecord& account : others)
        AddCandidate(account);
    RenderNames();
    ShowOwner();
}

// What this user lacks the right for is disabled, with the reason.
void CPage3::OfferChanges(bool isAnyoneAllowed) {
    std::string remark = AskReadOnlyReason(*this, *place, OWNER_SECURITY_INFORMATION);
    const bool canChange = remark.empty();
    if (canChange && !isAnyoneAllowed) remark = kOthersNeedPrivilege;
    CandidateList().EnableWindow(canChange);
    TreeBox().EnableWindow(canChange);
    RequiredControl<CButton>(*this, IDC_OTHER_OWNER).EnableWindow(canChange && isAnyoneAllowed);
    RequiredControl<CStatic>(*this, IDC_OWNER_REMARK).SetWindowText(remark);
}

int CPage3::AddCandidate(const AccountRecord& account) {
    const auto known = std::ranges::find_if(
        candidates, [&](const AccountRecord& candidate) { return IsSameAccount(candidate, account); });
    const auto row = static_cast<int>(known - candidates.begin());
    if (known == candidates.end()) {
        candidates.push_back(account);
        CandidateList().InsertItem(row, "");
    }
    return row;
}

void CPage3::RenderNames() {
    DistinctNames names;
    for (AccountRecord& candidate : candidates)
        names.Note(AccountNameSoFar(candidate), candidate);
    names.Note(AccountNameSoFar(owner), owner);
    for (int row = 0; AccountRecord & candidate : candidates)
        CandidateList().SetItemText(row++, 0, names.Of(AccountNameSoFar(candidate), candidate));
    if (owner.sid) OwnerField().SetWindowText(names.Of(AccountNameSoFar(owner), owner));
}

void CPage3::OnOtherAccount() {
    CDlgUsersAndGroups picker(this);
    picker.item = place->items.front();
    if (picker.DoModal() != IDOK) return;
    RedrawWindow();
    others.push_back(picker.result);
    const int row = AddCandidate(picker.result);
    RenderNames();
    CListCtrl& list = CandidateList();
    list.SetSelected(row, true);  // marks the page changed
    list.EnsureVisible(row);
    list.SetFocus();
}

void CPage3::ShowOwner() {
    const RememberedObject& item = place->items.front();
    const auto find = [item](AccountRecord& found, PatientWork::Running&) {
        HeldObject object;
        DWORD error = item.Find(object);
        if (error == ERROR_SUCCESS) error = ReadObjectOwner(object, found);
        return Outcome{error, Step::kReadOwner};
    };
    const Outcome outcome = FindOnVolume<AccountRecord>(*this, VolumeOfItem(*place, item), owner, find);
    ShowOutcome(GetSafeHwnd(), outcome);
    if (!outcome.IsDone()) return;
    OwnerField().SetWindowText("");  // an object may have no owner
    RenderNames();
}

void CPage3::OnCandidateClicked() {
    SetModified(true);
    changed = true;
}

// The keyboard selects without a click.
void CPage3::OnCandidateSelected(Notification& notification) {
    if (CandidateList().IsSelected(notification.row)) OnCandidateClicked();
}

std::optional<AccountRecord> CPage3::ChosenOwner() const {
    const int row = changed ? CandidateList().NextSelected(0) : -1;
    if (row < 0) return std::nullopt;
    return candidates[static_cast<std::size_t>(row)];
}

void CPage3::Preview() {
    std::optional<AccountRecord> chosen = ChosenOwner();
    if (!chosen) {
        ShowInfoBox(GetSafeHwnd(),
                    "No owner was chosen here, so applying would leave the owners as they are.");
        return;
    }
    const Contents contents = TreeBox().IsChecked() ? Contents::kToo : Contents::kNone;
    const auto make = [this, contents, &chosen](TreeObserver& observer) {
        return PreviewOwnerOnItems(place->items, chosen->RawSid(), contents, observer);
    };
    CPreviewDlg(this, CPreviewDlg::Purpose::kShow, make).DoModal();
}

bool CPage3::OnApply() {
    // Apply reads the candidates anew.
    if (std::optional<AccountRecord> chosen = ChosenOwner(); chosen && !Apply(chosen->RawSid())) return false;
    changed = false;
    return CPropertyPage::OnApply();
}

bool CPage3::Apply(PSID newOwner) {
    const bool isForTrees = TreeBox().IsChecked();
    const auto apply = [&](CWnd& window, std::span<const ObjectPlace> places, ChangeResults& results) {
        return MakeChangeAsking(window, *changes, ChangeKind::kOwner, [&](ChangeRecorder& recorder) {
            DoLongWork(window, [&] {
                ApplyToItems(place->items, places, newOwner, recorder, results);
                if (recorder.Error() == ERROR_SUCCESS)
                    ApplyBelow(place->items, places, newOwner, recorder, results);
            });
        });
    };
    ChangeResults results;
    const auto places = PlacesOf(place->items, isForTrees ? Contents::kToo : Contents::kNone);
    const bool isMade = apply(*this, places, results);
    ShowResults(this, std::move(results), apply);
    if (!isMade) return false;
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
