#include "browser/address_bar.h"

#include <algorithm>

#include "framework/device_context.h"
#include "framework/frame_window.h"
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

Rect AddrBar::FieldRect() const {
    const CWnd* field = GetDlgItem(IDC_LOCATION);
    if (field == nullptr) return {};
    const Rect bar = GetWindowRect();
    const Rect rect = field->GetWindowRect();
    return {rect.left - bar.left, rect.top - bar.top, rect.right - bar.left, rect.bottom - bar.top};
}

void AddrBar::OnPaint(CDC& dc) {
    const Rect caption{1, 4, FieldRect().left, 24};
    dc.DrawText("Location:", caption, TextStyle::kNormal);
}

int AddrBar::LeastWidth() const {
    constexpr int kLeastField = 80;
    return FieldRect().left + kLeastField + kGap + kGoMargin;
}

// The field and the button keep their distances from the bar's right edge, which is the frame's, and from
// each other, whatever width the caption has in the font.
void AddrBar::OnSize(Size client) {
    CWnd* field = GetDlgItem(IDC_LOCATION);
    if (field == nullptr || !goButton.HasWindow()) return;
    const Rect before = FieldRect();
    const int goLeft = std::max(client.cx - kGoMargin, before.left + kGap);
    field->MoveWindow({before.left, before.top, goLeft - kGap, before.top + kFieldHeight});
    goButton.MoveWindow({goLeft, kGoTop, goLeft + kGoSize, kGoTop + kGoSize});
    RedrawWindow();
}

}  // namespace permora
