#include "framework/property_sheet.h"

#include <algorithm>

#include "framework/dialog_controls.h"
#include "framework/property_sheet_state.h"
#include "framework/styles.h"
#include "platform/api/messages.h"
#include "platform/api/shell.h"

namespace permora {

int CPropertySheet::State::IndexOf(const CPropertyPage* page) const {
    const auto found = std::ranges::find(pages, page);
    return found != pages.end() ? static_cast<int>(found - pages.begin()) : kNoPage;
}

CPropertyPage* CPropertySheet::State::PageAt(int index) const {
    return index >= 0 && index < Count() ? pages[static_cast<std::size_t>(index)] : nullptr;
}

// ---- Going from page to page ----

bool CPropertySheet::State::Activate(int index, int direction) {
    for (CPropertyPage* page = PageAt(index); page != nullptr; page = PageAt(index)) {
        if (!page->HasWindow() && !CreatePage(*page)) return false;
        // The initialisation may have changed the set of pages.
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

void CPropertySheet::State::OnOkButton() {
    if (ApplyPages()) End(IDOK);
}

void CPropertySheet::State::OnCancelButton() {
    const std::vector<CPropertyPage*> asked = pages;
    for (CPropertyPage* page : asked)
        if (page->HasWindow() && !page->OnQueryCancel()) return;
    for (CPropertyPage* page : asked)
        if (page->HasWindow()) page->OnCancel();
    End(IDCANCEL);
}

void CPropertySheet::State::OnWizardButton(unsigned int id) {
    if (active == nullptr) return;
    if (id == kWizardFinishId) {
        if (active->OnWizardFinish()) End(static_cast<int>(kWizardFinishId));
        return;
    }
    const int direction = id == kWizardNextId ? 1 : -1;
    if (SwitchTo(IndexOf(active) + direction, direction)) FocusFirstControl(*active);
}

void CPropertySheet::State::End(int value) {
    result = value;
    hasEnded = true;
    if (modal != nullptr) modal->End();
}

// ---- The contract ----

CPropertySheet::CPropertySheet() : state(std::make_unique<State>(*this)) {}

CPropertySheet::~CPropertySheet() = default;

void CPropertySheet::Construct(const std::string& caption, CWnd* owner) {
    state->caption = caption;
    state->hasOwnTitle = !caption.empty();
    state->owner = owner;
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
    if (NativeTabs* tabs = state->Tabs()) tabs->InsertTab(state->Count() - 1, state->TabCaption(page));
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
    if (wasActive && state->Count() > 0) state->Activate(std::min(index, state->Count() - 1), -1);
}

void CPropertySheet::AddButton(unsigned int id, const std::string& text) {
    state->ownButtons.push_back({id, text});
}

void CPropertySheet::SetWizardMode() {
    state->isWizard = true;
}

void CPropertySheet::KeepSizeIn(Size& kept) {
    state->keptSize = &kept;
}

void CPropertySheet::OnSize(Size client) {
    if (state->modal != nullptr) state->PlaceControls(client);
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
    modal.onHelp = [this] { return state->active != nullptr ? WindowAccess::TemplateId(*state->active) : 0; };
    state->modal = &modal;
    state->result = IDCANCEL;
    state->hasEnded = false;
    SetWindowText(state->caption);
    state->CreateControls();
    state->Layout();
    state->ownSize = state->ClientSize();
    if (state->keptSize != nullptr && state->MayGrow()) modal.Enlarge(*state->keptSize);

    if (!state->Activate(0, 1)) {
        state->result = kFailed;
    } else {
        const bool wantsFocus = OnInitDialog();
        if (wantsFocus && state->active != nullptr) FocusFirstControl(*state->active);
        if (!state->hasEnded) modal.Run();
    }
    state->modal = nullptr;
    state->active = nullptr;
    if (state->keptSize != nullptr) {
        const Size size = state->ClientSize();
        *state->keptSize = size == state->ownSize ? Size{} : size;
    }
    DestroyWindow();
    for (CPropertyPage* page : state->pages)
        page->sheet = nullptr;
    return state->result;
}

bool CPropertySheet::OnCmdMsg(Notification& notification) {
    // The second press of a key may arrive after the sheet has ended.
    if (state->hasEnded) return true;
    if (CWnd::OnCmdMsg(notification)) return true;
    if (notification.code == Notify::kSelectionChanged && notification.id == kSheetTabsId) {
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
        case kSheetApplyId:
            state->ApplyPages();
            return true;
        case kWizardBackId:
        case kWizardNextId:
        case kWizardFinishId:
            state->OnWizardButton(notification.id);
            return true;
        default:
            return false;
    }
}

}  // namespace permora
