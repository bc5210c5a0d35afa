#include "editor/permissions_page.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <utility>
#include <vector>

#include "app/settings_store.h"
#include "editor/change_making.h"
#include "editor/item_asking.h"
#include "editor/list_writing.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "platform/system_message.h"
#include "resources/resource_ids.h"
#include "security/access_rows.h"
#include "security/apply_dialog.h"
#include "security/message_boxes.h"
#include "security/results_dialog.h"
#include "security/volume_asking.h"

namespace permora {
namespace {

constexpr int kSourceColumn = static_cast<int>(kAccessRowTitles.size());
constexpr int kSourceWidth = 200;

// False when nothing was tried; the reason has been shown.
bool ResetTrees(CWnd& window, std::span<const RememberedObject> items, std::span<const ObjectPlace> places,
                ChangeRecorder& recorder, ChangeResults& results) {
    const auto isForWalk = [](const ObjectPlace& place) {
        return place.part == ObjectPart::kContents || IsSingleBelow(place);
    };
    if (std::ranges::none_of(places, isForWalk)) return true;
    ApplyDlg dialog(&window, recorder, results);
    dialog.items = items;
    dialog.places = places;
    return dialog.DoModal() == IDOK;
}

std::vector<std::uint8_t> BytesOf(PACL list) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(list);
    return {bytes, bytes + list->AclSize};
}

}  // namespace

const MessageMap& CPage1::GetMessageMap() const {
    static const MessageMap kMap =
        MakeMessageMap<CPage1>(AccessListPage::GetMessageMap(),
                               {
                                   {IDC_ACCESS_LIST, Notify::kDoubleClick, &CPage1::OnEdit},
                                   {IDC_INHERIT_FROM_PARENT, Notify::kClicked, &CPage1::OnInheritanceClicked},
                                   {IDC_REPLACE_CHILD_ENTRIES, Notify::kClicked, &CPage1::MarkChanged},
                                   {IDC_SHOW_SOURCES, Notify::kClicked, &CPage1::OnShowSourcesClicked},
                               });
    return kMap;
}

CPage1::CPage1() : AccessListPage(IDD_PERMISSIONS_PAGE, EditScopes::kAll) {}

bool CPage1::OnInitDialog() {
    hasSourceColumn = false;
    const bool result = AccessListPage::OnInitDialog();
    SetCheck(IDC_SHOW_SOURCES, LoadShowSources());
    ShowSourceColumn();
    return result;
}

void CPage1::OnDestroy() {
    ForgetFacts();
    AccessListPage::OnDestroy();
}

// What is still looked at for an earlier question would only keep the disk busy.
void CPage1::ForgetFacts() {
    if (isForgotten) *isForgotten = true;
    question.Forget();
    facts.reset();
}

// Servers, domains and ten thousand items take their time: the page can be used meanwhile.
void CPage1::AskForFacts() {
    ForgetFacts();
    ShowKept("");
    const auto found = std::make_shared<ListFacts>();
    const auto isStopped = std::make_shared<std::atomic<bool>>(false);
    isForgotten = isStopped;
    const auto ask = [found, isStopped, items = place->items] { *found = FindListFacts(items, *isStopped); };
    const DWORD error = question.Ask(ask, [this, found] {
        facts = found;
        ShowKept(found->kept);
        ShowSources();
    });
    if (error != ERROR_SUCCESS) ShowKept("Who obeys the list is not known: " + SystemMessageLine(error));
}

void CPage1::OnShowSourcesClicked() {
    ShowSourceColumn();
    const DWORD error = StoreShowSources(hasSourceColumn);
    if (error != ERROR_SUCCESS) ShowSystemErrorBox(GetSafeHwnd(), error);
}

void CPage1::ShowSourceColumn() {
    if (IsChecked(IDC_SHOW_SOURCES) == hasSourceColumn) return;
    hasSourceColumn = !hasSourceColumn;
    if (hasSourceColumn)
        AccessList().InsertColumn(kSourceColumn, "Inherited From", kSourceWidth);
    else
        AccessList().DeleteColumn(kSourceColumn);
    ShowSources();
}

void CPage1::ShowSources() {
    if (!hasSourceColumn || !facts) return;
    CListCtrl& list = AccessList();
    const std::vector<std::string> texts = facts->SourceTexts(object.entries);
    for (int row = 0; row < list.GetItemCount(); ++row) {
        const auto entry = static_cast<std::size_t>(list.GetItemData(row));
        if (entry < texts.size()) list.SetItemText(row, kSourceColumn, texts[entry]);
    }
}

std::string CPage1::EmptyListText() const {
    if (IsChanged() && IsChecked(IDC_INHERIT_FROM_PARENT))
        return "Once applied, this object has no entries but those that the folder above hands down.";
    if (IsChanged())
        return "Once applied, nobody may do anything here. Only the owner can still change the list.";
    if (object.dacl == nullptr) return "Everyone may do everything: there is no access list.";
    return "Nobody may do anything here: the list is empty. Only the owner can still change it.";
}

bool CPage1::ReadItem() {
    struct Read {
        ObjectSecurity object;
        bool isFolder = false;
    };
    shown = {};
    AskForFacts();
    const RememberedObject& item = place->items.front();
    const auto find = [item](Read& found, PatientWork::Running&) {
        HeldObject held;
        Outcome outcome = FindItem(item, held);
        if (outcome.IsDone()) outcome = ReadObjectDacl(held, found.object);
        found.isFolder = outcome.IsDone() && held.IsFolder();
        return outcome;
    };
    Read read;
    const Outcome outcome = FindOnVolume<Read>(*this, VolumeOfItem(*place, item), read, find);
    ShowOutcome(GetSafeHwnd(), outcome);
    if (!outcome.IsDone()) return false;
    object = std::move(read.object);
    if (object.dacl == nullptr) ShowInfoBox(GetSafeHwnd(), kNullListText);
    ShowInheritance();
    Enable({IDC_REPLACE_CHILD_ENTRIES}, read.isFolder);
    return true;
}

std::string CPage1::ReadOnlyReason() {
    return AskReadOnlyReason(*this, *place, DACL_SECURITY_INFORMATION);
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
    if (!MayLose(dacl.get())) return false;
    const DaclInheritance inheritance = ChosenInheritance();
    const bool isForTrees = IsChecked(IDC_REPLACE_CHILD_ENTRIES);
    bool mayWrite = true;
    bool isReset = true;
    const auto apply = [&](CWnd& window, std::span<const ObjectPlace> places, ChangeResults& results) {
        const auto make = [&](ChangeRecorder& recorder) {
            mayWrite = WriteListAsking(window, place->items, places, inheritance, {dacl.get(), dacl.get()},
                                       object, recorder, results);
            if (!mayWrite || !isForTrees || recorder.Error() != ERROR_SUCCESS) return;
            isReset = ResetTrees(window, place->items, places, recorder, results);
            if (isReset) SetCheck(IDC_REPLACE_CHILD_ENTRIES, false);
        };
        const ChangeKind kind = isForTrees ? ChangeKind::kReset : ChangeKind::kPermissions;
        return MakeChangeAsking(window, *changes, kind, make) && mayWrite && isReset;
    };
    ChangeResults results;
    const auto places = PlacesOf(place->items, isForTrees ? Contents::kToo : Contents::kNone);
    shown = {};
    const bool isMade = apply(*this, places, results);
    if (!mayWrite) ReadAnew();
    if (mayWrite) ShowResults(this, std::move(results), apply);
    return isMade && FinishApply();
}

DaclInheritance CPage1::ChosenInheritance() const {
    return IsChecked(IDC_INHERIT_FROM_PARENT) ? DaclInheritance::kFromParent : DaclInheritance::kProtected;
}

BelowChange CPage1::ChosenBelow() const {
    return IsChecked(IDC_REPLACE_CHILD_ENTRIES) ? BelowChange::kReset : BelowChange::kCarryDown;
}

MakePreview CPage1::PreviewOf(PACL dacl, std::optional<BelowChange> below) {
    return [this, dacl, below, inheritance = ChosenInheritance()](TreeObserver& observer) {
        return PreviewListOnItems(place->items, inheritance, {dacl, dacl}, below, observer);
    };
}

void CPage1::Preview() {
    const UniqueLocal<ACL> dacl = ListToPreview();
    if (!dacl) return;
    CPreviewDlg dialog(this, CPreviewDlg::Purpose::kShow, PreviewOf(dacl.get(), ChosenBelow()));
    dialog.DoModal();
    shown = {BytesOf(dacl.get()), ChosenInheritance(), ChosenBelow(), dialog.MadeAt(), dialog.Made()};
}

// A preview grows old, since others change the objects, too.
std::shared_ptr<const ChangePreview> CPage1::JustShown(PACL dacl) const {
    constexpr std::chrono::minutes kLong(5);
    const bool isOfThis = shown.preview && shown.list == BytesOf(dacl) &&
                          shown.inheritance == ChosenInheritance() && shown.below == ChosenBelow();
    return isOfThis && std::chrono::steady_clock::now() - shown.since < kLong ? shown.preview : nullptr;
}

// The sheet shows the list of the first item alone. What was just previewed is not counted again, and trees
// are not walked for a list that is carried down, which takes nothing there.
bool CPage1::MayLose(PACL dacl) {
    const bool mayBeUnseen = place->items.size() > 1 || IsChecked(IDC_REPLACE_CHILD_ENTRIES);
    if (askBeforeLosses == nullptr || *askBeforeLosses == 0 || !mayBeUnseen) return true;
    CPreviewDlg preview(this, CPreviewDlg::Purpose::kAsk, PreviewOf(dacl, ChosenBelow()));
    preview.known = JustShown(dacl);
    if (preview.known && !preview.known->TakesUnseen()) return true;
    if (ChosenBelow() == BelowChange::kCarryDown) preview.decide = PreviewOf(dacl, std::nullopt);
    preview.askBeforeLosses = askBeforeLosses;
    return preview.DoModal() == IDOK;
}

}  // namespace permora
