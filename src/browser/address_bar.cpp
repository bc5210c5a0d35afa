#include "browser/address_bar.h"

#include <algorithm>

#include "framework/device_context.h"
#include "framework/dialog_controls.h"
#include "framework/frame_window.h"
#include "framework/resource_templates.h"
#include "platform/api/messages.h"
#include "resources/resource_ids.h"

namespace permora {
namespace {

// Of the go button, from the bar's right edge and its top.
constexpr int kGoMargin = 47;
constexpr int kGoTop = 3;
constexpr int kGoSize = 16;
// Between the field and the button.
constexpr int kGap = 5;
constexpr int kFieldHeight = 23;
constexpr int kTextTop = 4;  // of the caption

// By definition eight dialog units.
int LineHeight() {
    return DialogUnitsToPixels({0, 0, 0, 8}).bottom;
}

}  // namespace

const MessageMap& AddrBar::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<AddrBar>(
        CDialogBar::GetMessageMap(), {
                                         {IDC_LOCATION, Notify::kTextChanged, &AddrBar::OnLocationChanged},
                                         {IDOK, Notify::kClicked, &AddrBar::OnEnter},
                                         {IDCANCEL, Notify::kClicked, &AddrBar::OnEscape},
                                     });
    return kMap;
}

bool AddrBar::Create(CFrameWnd& frame, unsigned int templateId) {
    constexpr Rect kGoButton{2, 2, 18, 18};
    owner = &frame;
    const auto bar = LoadDialogTemplate(templateId);
    if (!bar) return false;
    for (const ControlTemplate& control : bar->controls)
        if (control.id == IDC_LOCATION) fieldPlace = DialogUnitsToPixels(control.rect);
    return CDialogBar::Create(frame, templateId) && goButton.Create(*this, kGoButton, ID_GO_TO_LOCATION) &&
           goButton.LoadBitmaps(IDB_GO_NORMAL, IDB_GO_PRESSED, IDB_GO_NORMAL, IDB_GO_DISABLED);
}

void AddrBar::SetLocationText(const std::string& text) {
    shownLocation = text;
    if (CWnd* field = GetDlgItem(IDC_LOCATION)) field->SetWindowText(text);
}

void AddrBar::OnLocationChanged() {
    if (const CWnd* field = GetDlgItem(IDC_LOCATION)) locationText = field->GetWindowText();
}

void AddrBar::OnEnter() {
    Notification pressed{.id = ID_GO_TO_LOCATION, .code = Notify::kClicked};
    OnCmdMsg(pressed);
}

void AddrBar::OnEscape() {
    SetLocationText(shownLocation);
    owner->SetFocus();
}

void AddrBar::OnPaint(CDC& dc) {
    const Rect caption{1, kTextTop, fieldPlace.left, kTextTop + std::max(LineHeight(), 20)};
    dc.DrawText("Location:", caption, TextStyle::kNormal);
}

int AddrBar::LeastWidth() const {
    constexpr int kLeastField = 80;
    return fieldPlace.left + kLeastField + kGap + kGoMargin;
}

// The field and the button keep their distances from the bar's right edge, which is the frame's, and from
// each other, whatever width the caption has in the font.
void AddrBar::OnSize(Size client) {
    CWnd* field = GetDlgItem(IDC_LOCATION);
    if (field == nullptr || !goButton.HasWindow()) return;
    const int goLeft = std::max(client.cx - kGoMargin, fieldPlace.left + kGap);
    const int fieldHeight = std::max(kFieldHeight, LineHeight() + 2 * kTextTop);
    field->MoveWindow({fieldPlace.left, fieldPlace.top, goLeft - kGap, fieldPlace.top + fieldHeight});
    goButton.MoveWindow({goLeft, kGoTop, goLeft + kGoSize, kGoTop + kGoSize});
    RedrawWindow();
}

}  // namespace permora
