#include "framework/property_sheet.h"

#include <algorithm>
#include <array>
#include <vector>

#include "framework/dialog_controls.h"
#include "framework/modal_window.h"
#include "framework/resource_templates.h"
#include "framework/styles.h"
#include "framework/window_access.h"
#include "platform/api/messages.h"
#include "platform/api/shell.h"

namespace permora {
namespace {

// The system's ids of the sheet's own controls.
constexpr unsigned int kApplyId = 0x3021;
constexpr unsigned int kBackId = 0x3023;
constexpr unsigned int kNextId = 0x3024;
constexpr unsigned int kFinishId = 0x3025;  // ID_WIZFINISH
constexpr unsigned int kTabsId = 0x3020;
constexpr unsigned int kLineId = 0x3026;

constexpr int kStay = -1;  // answer of OnWizardBack and OnWizardNext
constexpr int kNoPage = -1;

// Distances in dialog units, as the system's own dialogs keep them.
constexpr int kSheetMargin = 7;
constexpr int kGap = 4;
constexpr int kButtonWidth = 50;
constexpr int kButtonHeight = 14;

Size UnitsToPixels(int width, int height) {
    const Rect rect = DialogUnitsToPixels({0, 0, width, height});
    return {rect.right, rect.bottom};
}

bool Has(WizardButtons buttons, WizardButtons bit) {
    return (static_cast<unsigned int>(buttons) & static_cast<unsigned int>(bit)) != 0;
}

void SetStyleBit(CWnd* control, DWORD bit, bool isSet) {
    if (control != nullptr) control->ModifyStyle(isSet ? 0 : bit, isSet ? bit : 0);
}

}  // namespace

// ---- Pages ----

CPropertyPage::CPropertyPage(unsigned int templateNumber, unsigned int captionNumber)
    : CDialog(templateNumber), captionId(captionNumber) {}

bool CPropertyPage::OnSetActive() {
    return true;
}

bool CPropertyPage::OnKillActive() {
    return true;
}

bool CPropertyPage::OnApply() {
    OnOK();
    return true;
}

void CPropertyPage::OnOK() {
    DoDataExchange(true);
}

bool CPropertyPage::OnQueryCancel() {
    return true;
}

void CPropertyPage::OnCancel() {}

int CPropertyPage::OnWizardBack() {
    return 0;
}

int CPropertyPage::OnWizardNext() {
    return 0;
}

bool CPropertyPage::OnWizardFinish() {
    return true;
}

// ---- The sheet ----

struct CPropertySheet::State {
    explicit State(CPropertySheet& served) : sheet(served) {}

    CPropertySheet& sheet;
    std::string caption;
    bool hasOwnTitle = false;
    CWnd* owner = nullptr;
    int firstPage = 0;
    bool isWizard = false;
    std::vector<CPropertyPage*> pages;

    // The run; null between runs.
    ModalWindow* modal = nullptr;
    CPropertyPage* active = nullptr;
    int result = 0;
    bool hasEnded = false;
    Rect pageArea;

    int Count() const { return static_cast<int>(pages.size()); }
    int IndexOf(const CPropertyPage* page) const;
    CPropertyPage* PageAt(int index) const;
    CPropertyPage* PageOfTemplate(int templateId) const;
    std::string TabCaption(const CPropertyPage& page) const;

    void CreateControls();
    CWnd& AddControl(std::unique_ptr<CWnd> control, ControlKind kind, unsigned int id,
                     const std::string& text, DWORD style);
    void Layout();
    Size LargestPage() const;
    void PlaceButtons(const std::vector<unsigned int>& ids, Size client);
    bool CreatePage(CPropertyPage& page);
    void UpdateTabOrder();

    // Shows the page at `index`, or the next in `direction` that accepts.
    bool Activate(int index, int direction);
    bool SwitchTo(int index, int direction);
    void OnTabChosen();
    bool OnNextPage(int direction);

    bool ApplyPages();
    void UpdateApplyButton();
    void OnOkButton();
    void OnCancelButton();
    void OnWizardButton(unsigned int id);
    void ShowWizardButtons(WizardButtons buttons);
    void End(int value);

    NativeTabs* Tabs() const {
        CWnd* tabs = sheet.GetDlgItem(kTabsId);
        return tabs != nullptr ? WindowAccess::NativeAs<NativeTabs>(*tabs) : nullptr;
    }
};

int CPropertySheet::State::IndexOf(const CPropertyPage* page) const {
    const auto found = std::ranges::find(pages, page);
    return found != pages.end() ? static_cast<int>(found - pages.begin()) : kNoPage;
}

CPropertyPage* CPropertySheet::State::PageAt(int index) const {
    return index >= 0 && index < Count() ? pages[static_cast<std::size_t>(index)] : nullptr;
}

CPropertyPage* CPropertySheet::State::PageOfTemplate(int templateId) const {
    const auto found = std::ranges::find_if(pages, [templateId](const CPropertyPage* page) {
        return WindowAccess::TemplateId(*page) == static_cast<unsigned int>(templateId);
    });
    return found != pages.end() ? *found : nullptr;
}

std::string CPropertySheet::State::TabCaption(const CPropertyPage& page) const {
    if (page.captionId != 0) return LoadResourceString(page.captionId);
    const auto dialog = LoadDialogTemplate(WindowAccess::TemplateId(page));
    return dialog ? dialog->caption : std::string();
}

// ---- Making and placing ----

CWnd& CPropertySheet::State::AddControl(std::unique_ptr<CWnd> control, ControlKind kind, unsigned int id,
                                        const std::string& text, DWORD style) {
    ControlSpec spec;
    spec.kind = kind;
    spec.id = id;
    spec.text = text;
    spec.style = style | WS_CHILD | WS_VISIBLE;
    return WindowAccess::AddControl(sheet, std::move(control), spec);
}

void CPropertySheet::State::CreateControls() {
    const auto addButton = [this](unsigned int id, const char* text, DWORD style) {
        AddControl(std::make_unique<CButton>(), ControlKind::kPushButton, id, text, style | WS_TABSTOP);
    };
    if (isWizard) {
        AddControl(std::make_unique<CStatic>(), ControlKind::kEtchedFrame, kLineId, "", SS_ETCHEDFRAME);
        addButton(kBackId, "< &Back", BS_PUSHBUTTON);
        addButton(kNextId, "&Next >", BS_PUSHBUTTON);
        addButton(kFinishId, "Finish", BS_PUSHBUTTON);
        addButton(IDCANCEL, "Cancel", BS_PUSHBUTTON);
        ShowWizardButtons(WizardButtons::kBack | WizardButtons::kNext);
        return;
    }
    AddControl(std::make_unique<CStatic>(), ControlKind::kTabs, kTabsId, "", WS_TABSTOP);
    for (int i = 0; i < Count(); ++i)
        Tabs()->InsertTab(i, TabCaption(*PageAt(i)));
    addButton(IDOK, "OK", BS_DEFPUSHBUTTON);
    addButton(IDCANCEL, "Cancel", BS_PUSHBUTTON);
    addButton(kApplyId, "&Apply", BS_PUSHBUTTON | WS_DISABLED);
}

Size CPropertySheet::State::LargestPage() const {
    Size largest;
    for (const CPropertyPage* page : pages) {
        const auto dialog = LoadDialogTemplate(WindowAccess::TemplateId(*page));
        if (!dialog) continue;
        const Size size = UnitsToPixels(dialog->size.cx, dialog->size.cy);
        largest.cx = std::max(largest.cx, size.cx);
        largest.cy = std::max(largest.cy, size.cy);
    }
    return largest;
}

void CPropertySheet::State::Layout() {
    const Size margin = UnitsToPixels(kSheetMargin, kSheetMargin);
    const Size button = UnitsToPixels(kButtonWidth, kButtonHeight);
    const Size page = LargestPage();
    Size client;
    if (isWizard) {
        client = {page.cx, page.cy + 2 * margin.cy + button.cy};
        pageArea = {0, 0, page.cx, page.cy};
        sheet.GetDlgItem(kLineId)->MoveWindow({0, page.cy, page.cx, page.cy + 2});
        PlaceButtons({kBackId, kNextId, IDCANCEL}, client);
        const Size gap = UnitsToPixels(kGap, 0);
        const int finishRight = client.cx - margin.cx - button.cx - gap.cx;
        const int top = client.cy - margin.cy - button.cy;
        sheet.GetDlgItem(kFinishId)->MoveWindow({finishRight - button.cx, top, finishRight, top + button.cy});
    } else {
        const Size tabs = Tabs()->SizeAround(page);
        client = {tabs.cx + 2 * margin.cx, tabs.cy + 3 * margin.cy + button.cy};
        sheet.GetDlgItem(kTabsId)->MoveWindow(
            {margin.cx, margin.cy, margin.cx + tabs.cx, margin.cy + tabs.cy});
        pageArea = Tabs()->PageArea();
        PlaceButtons({IDOK, IDCANCEL, kApplyId}, client);
    }
    modal->SetClientSize(client);
    for (CPropertyPage* each : pages) {
        if (each->HasWindow()) each->MoveWindow(pageArea);
    }
}

// In a row at the lower right.
void CPropertySheet::State::PlaceButtons(const std::vector<unsigned int>& ids, Size client) {
    const Size margin = UnitsToPixels(kSheetMargin, kSheetMargin);
    const Size button = UnitsToPixels(kButtonWidth, kButtonHeight);
    const int gap = UnitsToPixels(kGap, 0).cx;
    const int top = client.cy - margin.cy - button.cy;
    int left = client.cx - margin.cx + gap - static_cast<int>(ids.size()) * (button.cx + gap);
    for (const unsigned int id : ids) {
        sheet.GetDlgItem(id)->MoveWindow({left, top, left + button.cx, top + button.cy});
        left += button.cx + gap;
    }
}

bool CPropertySheet::State::CreatePage(CPropertyPage& page) {
    const unsigned int templateId = WindowAccess::TemplateId(page);
    const auto dialog = LoadDialogTemplate(templateId);
    if (!dialog) return false;
    WindowAccess::Attach(page, MakeNativePane(page, sheet, templateId), &sheet, templateId, WS_CHILD);
    page.MoveWindow(pageArea);
    CreateTemplateControls(page, *dialog);
    page.sheet = &sheet;
    page.modified = false;
    UpdateTabOrder();
    page.OnInitDialog();
    return true;
}

void CPropertySheet::State::UpdateTabOrder() {
    std::vector<CWnd*> order;
    if (CWnd* tabs = sheet.GetDlgItem(kTabsId)) order.push_back(tabs);
    for (CPropertyPage* page : pages) {
        if (page->HasWindow()) order.push_back(page);
    }
    for (const unsigned int id :
         {kBackId, kNextId, kFinishId, unsigned{IDOK}, unsigned{IDCANCEL}, kApplyId}) {
        if (CWnd* button = sheet.GetDlgItem(id)) order.push_back(button);
    }
    modal->SetTabOrder(order);
}

// ---- Going from page to page ----

bool CPropertySheet::State::Activate(int index, int direction) {
    for (CPropertyPage* page = PageAt(index); page != nullptr; page = PageAt(index)) {
        if (!page->HasWindow() && !CreatePage(*page)) return false;
        // Its initialisation may have changed which pages there are.
        index = IndexOf(page);
        if (page->OnSetActive()) {
            if (active != nullptr && active != page) active->ShowWindow(SW_HIDE);
            active = page;
            if (NativeTabs* tabs = Tabs()) tabs->Select(index);
            page->ShowWindow(SW_SHOW);
            if (isWizard && !hasOwnTitle) sheet.SetWindowText(TabCaption(*page));
            return true;
        }
        index = IndexOf(page) + direction;
    }
    return false;
}

bool CPropertySheet::State::SwitchTo(int index, int direction) {
    if (PageAt(index) == nullptr || PageAt(index) == active) return PageAt(index) != nullptr;
    if (active != nullptr && !active->OnKillActive()) return false;
    return Activate(index, direction);
}

void CPropertySheet::State::OnTabChosen() {
    const int chosen = Tabs()->Selection();
    if (!SwitchTo(chosen, 1)) Tabs()->Select(IndexOf(active));
}

bool CPropertySheet::State::OnNextPage(int direction) {
    if (isWizard || Count() == 0) return false;
    if (SwitchTo((IndexOf(active) + direction + Count()) % Count(), direction)) FocusFirstControl(*active);
    return true;
}

// ---- Buttons ----

bool CPropertySheet::State::ApplyPages() {
    if (active != nullptr && !active->OnKillActive()) return false;
    const std::vector<CPropertyPage*> asked = pages;
    for (CPropertyPage* page : asked) {
        if (!page->HasWindow() || page->OnApply()) continue;
        if (page != active) Activate(IndexOf(page), 1);
        return false;
    }
    for (CPropertyPage* page : pages)
        page->modified = false;
    UpdateApplyButton();
    return true;
}

void CPropertySheet::State::UpdateApplyButton() {
    const bool isModified =
        std::ranges::any_of(pages, [](const CPropertyPage* page) { return page->modified; });
    SetStyleBit(sheet.GetDlgItem(kApplyId), WS_DISABLED, !isModified);
}

void CPropertySheet::State::OnOkButton() {
    if (ApplyPages()) End(IDOK);
}

void CPropertySheet::State::OnCancelButton() {
    const std::vector<CPropertyPage*> asked = pages;
    for (CPropertyPage* page : asked) {
        if (page->HasWindow() && !page->OnQueryCancel()) return;
    }
    for (CPropertyPage* page : asked) {
        if (page->HasWindow()) page->OnCancel();
    }
    End(IDCANCEL);
}

void CPropertySheet::State::OnWizardButton(unsigned int id) {
    if (active == nullptr) return;
    if (id == kFinishId) {
        if (active->OnWizardFinish()) End(static_cast<int>(kFinishId));
        return;
    }
    const int direction = id == kNextId ? 1 : -1;
    const int answer = direction > 0 ? active->OnWizardNext() : active->OnWizardBack();
    if (answer == kStay) return;
    const int target = answer == 0 ? IndexOf(active) + direction : IndexOf(PageOfTemplate(answer));
    if (SwitchTo(target, direction)) FocusFirstControl(*active);
}

// Next and Finish share one place, as wizards have it; the one that is there is the default button.
void CPropertySheet::State::ShowWizardButtons(WizardButtons buttons) {
    const bool canFinish = Has(buttons, WizardButtons::kFinish);
    const bool showsFinish = canFinish || Has(buttons, WizardButtons::kDisabledFinish);
    CWnd* next = sheet.GetDlgItem(kNextId);
    CWnd* finish = sheet.GetDlgItem(kFinishId);
    if (next == nullptr || finish == nullptr) return;
    SetStyleBit(sheet.GetDlgItem(kBackId), WS_DISABLED, !Has(buttons, WizardButtons::kBack));
    SetStyleBit(next, WS_DISABLED, !Has(buttons, WizardButtons::kNext));
    SetStyleBit(finish, WS_DISABLED, !canFinish);
    SetStyleBit(next, WS_VISIBLE, !showsFinish);
    SetStyleBit(finish, WS_VISIBLE, showsFinish);
    SetStyleBit(next, BS_DEFPUSHBUTTON, !showsFinish);
    SetStyleBit(finish, BS_DEFPUSHBUTTON, showsFinish);
}

void CPropertySheet::State::End(int value) {
    result = value;
    hasEnded = true;
    if (modal != nullptr) modal->End();
}

// ---- The contract ----

CPropertySheet::CPropertySheet() : state(std::make_unique<State>(*this)) {}

CPropertySheet::~CPropertySheet() = default;

void CPropertySheet::Construct(const std::string& caption, CWnd* owner, int firstPage) {
    state->caption = caption;
    state->hasOwnTitle = !caption.empty();
    state->owner = owner;
    state->firstPage = firstPage;
}

void CPropertySheet::SetTitle(const std::string& title) {
    state->caption = title;
    state->hasOwnTitle = !title.empty();
    SetWindowText(title);
}

void CPropertySheet::AddPage(CPropertyPage& page) {
    if (state->IndexOf(&page) != kNoPage) return;
    state->pages.push_back(&page);
    if (state->modal == nullptr) return;
    if (NativeTabs* tabs = state->Tabs()) tabs->InsertTab(GetPageCount() - 1, state->TabCaption(page));
    state->Layout();
}

void CPropertySheet::RemovePage(int index) {
    CPropertyPage* page = state->PageAt(index);
    if (page == nullptr) return;
    state->pages.erase(state->pages.begin() + index);
    if (state->modal == nullptr) return;
    if (NativeTabs* tabs = state->Tabs()) tabs->RemoveTab(index);
    const bool wasActive = state->active == page;
    if (wasActive) state->active = nullptr;
    page->DestroyWindow();
    page->sheet = nullptr;
    page->modified = false;
    state->UpdateApplyButton();
    if (wasActive && GetPageCount() > 0) state->Activate(std::min(index, GetPageCount() - 1), -1);
}

int CPropertySheet::GetPageCount() const {
    return state->Count();
}

CPropertyPage* CPropertySheet::GetActivePage() const {
    return state->active;
}

bool CPropertySheet::SetActivePage(int index) {
    return state->modal != nullptr && state->SwitchTo(index, 1);
}

void CPropertySheet::SetWizardMode() {
    state->isWizard = true;
}

void CPropertySheet::SetWizardButtons(WizardButtons buttons) {
    state->ShowWizardButtons(buttons);
}

void CPropertySheet::Cancel() {
    if (state->modal != nullptr && !state->hasEnded) state->OnCancelButton();
}

int CPropertySheet::DoModal() {
    constexpr int kFailed = -1;
    if (state->Count() == 0 || HasWindow()) return kFailed;
    ModalWindow modal(*this, state->owner, WS_POPUP | WS_CAPTION | WS_SYSMENU, 0);
    modal.onNextPage = [this](int direction) { return state->OnNextPage(direction); };
    state->modal = &modal;
    state->result = IDCANCEL;
    state->hasEnded = false;
    SetWindowText(state->caption);
    state->CreateControls();
    state->Layout();

    const int first = state->PageAt(state->firstPage) != nullptr ? state->firstPage : 0;
    if (!state->Activate(first, 1)) {
        state->result = kFailed;
    } else {
        const bool wantsFocus = OnInitDialog();
        if (wantsFocus && state->active != nullptr) FocusFirstControl(*state->active);
        if (!state->hasEnded) modal.Run();
    }
    state->modal = nullptr;
    state->active = nullptr;
    DestroyWindow();
    for (CPropertyPage* page : state->pages)
        page->sheet = nullptr;
    return state->result;
}

bool CPropertySheet::OnInitDialog() {
    return true;
}

bool CPropertySheet::OnCmdMsg(Notification& notification) {
    // A key pressed twice may come when the sheet has ended already.
    if (state->hasEnded) return true;
    if (CWnd::OnCmdMsg(notification)) return true;
    if (notification.code == Notify::kSelectionChanged && notification.id == kTabsId) {
        state->OnTabChosen();
        return true;
    }
    if (notification.code != Notify::kClicked) return false;
    switch (notification.id) {
        case IDOK:
            if (!state->isWizard) state->OnOkButton();
            return true;
        case IDCANCEL:
            state->OnCancelButton();
            return true;
        case kApplyId:
            state->ApplyPages();
            return true;
        case kBackId:
        case kNextId:
        case kFinishId:
            state->OnWizardButton(notification.id);
            return true;
        default:
            return false;
    }
}

void CPropertyPage::SetModified(bool isModified) {
    modified = isModified;
    if (sheet != nullptr) sheet->state->UpdateApplyButton();
}

}  // namespace permora
