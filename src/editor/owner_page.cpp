#include "editor/owner_page.h"

#include <atomic>
#include <optional>
#include <utility>

#include "editor/required_control.h"
#include "framework/long_work.h"
#include "framework/stoppable_work.h"
#include "platform/api/errors.h"
#include "resources/resource_ids.h"
#include "security/item_walk.h"
#include "security/message_boxes.h"
#include "security/object_owner.h"
#include "security/object_security.h"
#include "security/owner_candidates.h"

namespace permora {
namespace {

constexpr int kColumnWidth = 500;

// What cannot be changed inside a tree is left as it is.
class QuietWalk : public TreeObserver {
  public:
    bool Begin(const char* /*name*/) override { return !isStopped; }
    void PassOver(const std::string& path, DWORD error) override { foreign.PassOver(path, error); }

    ForeignParts foreign;

  private:
    std::atomic<bool> isStopped = false;  // the program ends
    const StoppableWork stoppable{[this] { isStopped = true; }};
};

void ApplyToItems(HWND window, std::span<const RememberedObject> items, PSID newOwner) {
    for (const RememberedObject& item : items) {
        HeldObject object;
        if (!FindItem(window, item, object)) continue;
        const DWORD error = object.WriteOwner(newOwner);
        if (error != ERROR_SUCCESS) ShowSystemErrorBox(window, error);
    }
}

// A file has nothing below it, and a folder that cannot be entered keeps its contents as they are.
void ApplyBelow(HWND window, std::span<const RememberedObject> items, PSID newOwner) {
    QuietWalk walk;
    TreeCounts counts;
    for (const RememberedObject& item : items) {
        HeldObject folder;
        walk.foreign.SetItem(item.Path());
        if (FindFolder(window, item, folder))
            static_cast<void>(folder.SetOwnersBelow(newOwner, LinkedFiles::kPassOver, walk, counts));
    }
    walk.foreign.Tell(window);
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
    Fill();
    return CPropertyPage::OnInitDialog();
}

// Where the candidates cannot be found, the list and the field keep what they show.
void CPage3::Fill() {
    std::optional<std::vector<AccountRecord>> found = FindOwnerCandidates(GetSafeHwnd());
    if (!found) return;
    candidates = std::move(*found);
    CListCtrl& list = CandidateList();
    list.DeleteAllItems();
    for (AccountRecord& candidate : candidates)
        list.InsertItem(list.GetItemCount(), AccountDisplayName(candidate));
    if (!items.empty()) ShowOwner();
}

void CPage3::ShowOwner() {
    HeldObject object;
    AccountRecord found;
    DWORD error = items.front().Find(object);
    if (error == ERROR_SUCCESS) error = ReadObjectOwner(object, found);
    if (error != ERROR_SUCCESS) {
        ShowErrorWithSystemText(GetSafeHwnd(), "Cannot get owner information", error);
        return;
    }
    OwnerField().SetWindowText(AccountDisplayName(found));
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
    // A copy: the candidates are read anew at the end.
    if (row >= 0) Apply(AccountRecord(candidates[static_cast<std::size_t>(row)]).sid.get());
    return CPropertyPage::OnApply();
}

void CPage3::Apply(PSID newOwner) {
    DoLongWork(*this, [this, newOwner, window = GetSafeHwnd(), isForTrees = TreeBox().IsChecked()] {
        ApplyToItems(window, items, newOwner);
        if (isForTrees) ApplyBelow(window, items, newOwner);
    });
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
