#include <algorithm>

#include "framework/dialog_controls.h"
#include "framework/property_sheet_state.h"
#include "framework/resource_templates.h"
#include "framework/styles.h"
#include "platform/api/messages.h"

namespace permora {
namespace {

// Distances of the system's own dialogs, in dialog units.
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

std::string CPropertySheet::State::TabCaption(const CPropertyPage& page) const {
    if (page.captionId != 0) return LoadResourceString(page.captionId);
    const auto dialog = LoadDialogTemplate(WindowAccess::TemplateId(page));
    return dialog ? dialog->caption : std::string();
}

CWnd& CPropertySheet::State::AddControl(std::unique_ptr<CWnd> control, ControlKind kind, unsigned int id,
                                        const std::string& text, DWORD style) {
    return WindowAccess::AddControl(
        sheet, std::move(control),
        {.kind = kind, .id = id, .style = style | WS_CHILD | WS_VISIBLE, .text = text});
}

void CPropertySheet::State::CreateControls() {
    const auto addButton = [this](unsigned int id, const char* text, DWORD style) {
        AddControl(std::make_unique<CButton>(), ControlKind::kPushButton, id, text, style | WS_TABSTOP);
    };
    if (isWizard) {
        AddControl(std::make_unique<CStatic>(), ControlKind::kEtchedFrame, kWizardLineId, "", SS_ETCHEDFRAME);
        addButton(kWizardBackId, "< &Back", BS_PUSHBUTTON);
        addButton(kWizardNextId, "&Next >", BS_PUSHBUTTON);
        addButton(kWizardFinishId, "Finish", BS_PUSHBUTTON);
        addButton(IDCANCEL, "Cancel", BS_PUSHBUTTON);
        ShowWizardButtons(WizardButtons::kBack | WizardButtons::kNext);
        return;
    }
    AddControl(std::make_unique<CStatic>(), ControlKind::kTabs, kSheetTabsId, "", WS_TABSTOP);
    for (int i = 0; i < Count(); ++i)
        Tabs()->InsertTab(i, TabCaption(*PageAt(i)));
    addButton(IDOK, "OK", BS_DEFPUSHBUTTON);
    addButton(IDCANCEL, "Cancel", BS_PUSHBUTTON);
    addButton(kSheetApplyId, "&Apply", BS_PUSHBUTTON | WS_DISABLED);
    for (const Button& own : ownButtons)
        addButton(own.id, own.text.c_str(), BS_PUSHBUTTON);
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

bool CPropertySheet::State::MayGrow() const {
    return std::ranges::any_of(pages, [](const CPropertyPage* page) {
        const auto dialog = LoadDialogTemplate(WindowAccess::TemplateId(*page));
        return dialog && !dialog->growing.empty();
    });
}

void CPropertySheet::State::Layout() {
    const Size margin = UnitsToPixels(kSheetMargin, kSheetMargin);
    const Size button = UnitsToPixels(kButtonWidth, kButtonHeight);
    const Size page = LargestPage();
    Size client{page.cx, page.cy + 2 * margin.cy + button.cy};
    if (!isWizard) {
        const Size tabs = Tabs()->SizeAround(page);
        client = {tabs.cx + 2 * margin.cx, tabs.cy + 3 * margin.cy + button.cy};
    }
    modal->SetClientSize(client, MayGrow() ? Sizing::kMayGrow : Sizing::kFixed);
    PlaceControls(ClientSize());
}

void CPropertySheet::State::PlaceControls(Size client) {
    const Size margin = UnitsToPixels(kSheetMargin, kSheetMargin);
    const Size button = UnitsToPixels(kButtonWidth, kButtonHeight);
    if (isWizard) {
        pageArea = {0, 0, client.cx, client.cy - 2 * margin.cy - button.cy};
        sheet.GetDlgItem(kWizardLineId)->MoveWindow({0, pageArea.bottom, client.cx, pageArea.bottom + 2});
        PlaceButtons({kWizardBackId, kWizardNextId, IDCANCEL}, client);
        const Size gap = UnitsToPixels(kGap, 0);
        const int finishRight = client.cx - margin.cx - button.cx - gap.cx;
        const int top = client.cy - margin.cy - button.cy;
        sheet.GetDlgItem(kWizardFinishId)
            ->MoveWindow({finishRight - button.cx, top, finishRight, top + button.cy});
    } else {
        sheet.GetDlgItem(kSheetTabsId)
            ->MoveWindow(
                {margin.cx, margin.cy, client.cx - margin.cx, client.cy - 2 * margin.cy - button.cy});
        pageArea = Tabs()->PageArea();
        PlaceButtons({IDOK, IDCANCEL, kSheetApplyId}, client);
        PlaceOwnButtons(client);
    }
    for (CPropertyPage* each : pages)
        if (each->HasWindow()) each->MoveWindow(pageArea);
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

// In a row at the lower left, so that the system's own stay where they always are.
void CPropertySheet::State::PlaceOwnButtons(Size client) {
    const Size margin = UnitsToPixels(kSheetMargin, kSheetMargin);
    const Size button = UnitsToPixels(kButtonWidth, kButtonHeight);
    const int top = client.cy - margin.cy - button.cy;
    int left = margin.cx;
    for (const Button& own : ownButtons) {
        sheet.GetDlgItem(own.id)->MoveWindow({left, top, left + button.cx, top + button.cy});
        left += button.cx + UnitsToPixels(kGap, 0).cx;
    }
}

bool CPropertySheet::State::CreatePage(CPropertyPage& page) {
    const unsigned int templateId = WindowAccess::TemplateId(page);
    const auto dialog = LoadDialogTemplate(templateId);
    if (!dialog) return false;
    WindowAccess::Attach(page, MakeNativePane(page, sheet, templateId), &sheet, templateId, WS_CHILD);
    page.MoveWindow(pageArea);
    CreateTemplateControls(page, *dialog);
    WindowAccess::Layout(page).Start(page, *dialog);
    page.sheet = &sheet;
    page.modified = false;
    UpdateTabOrder();
    page.OnInitDialog();
    return true;
}

void CPropertySheet::State::UpdateTabOrder() {
    std::vector<CWnd*> order;
    if (CWnd* tabs = sheet.GetDlgItem(kSheetTabsId)) order.push_back(tabs);
    for (CPropertyPage* page : pages)
        if (page->HasWindow()) order.push_back(page);
    for (const unsigned int id :
         {kWizardBackId, kWizardNextId, kWizardFinishId, unsigned{IDOK}, unsigned{IDCANCEL}, kSheetApplyId}) {
        if (CWnd* button = sheet.GetDlgItem(id)) order.push_back(button);
    }
    for (const Button& own : ownButtons)
        if (CWnd* button = sheet.GetDlgItem(own.id)) order.push_back(button);
    modal->SetTabOrder(order);
}

void CPropertySheet::State::UpdateApplyButton() {
    const bool isModified =
        std::ranges::any_of(pages, [](const CPropertyPage* page) { return page->modified; });
    SetStyleBit(sheet.GetDlgItem(kSheetApplyId), WS_DISABLED, !isModified);
}

// Next and Finish share one place, as in all wizards. The visible one is the default button.
void CPropertySheet::State::ShowWizardButtons(WizardButtons buttons) {
    const bool canFinish = Has(buttons, WizardButtons::kFinish);
    const bool showsFinish = canFinish || Has(buttons, WizardButtons::kDisabledFinish);
    CWnd* next = sheet.GetDlgItem(kWizardNextId);
    CWnd* finish = sheet.GetDlgItem(kWizardFinishId);
    if (next == nullptr || finish == nullptr) return;
    SetStyleBit(sheet.GetDlgItem(kWizardBackId), WS_DISABLED, !Has(buttons, WizardButtons::kBack));
    SetStyleBit(next, WS_DISABLED, !Has(buttons, WizardButtons::kNext));
    SetStyleBit(finish, WS_DISABLED, !canFinish);
    SetStyleBit(next, WS_VISIBLE, !showsFinish);
    SetStyleBit(finish, WS_VISIBLE, showsFinish);
    SetStyleBit(next, BS_DEFPUSHBUTTON, !showsFinish);
    SetStyleBit(finish, BS_DEFPUSHBUTTON, showsFinish);
}

}  // namespace permora
