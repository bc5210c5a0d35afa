#include "browser/address_bar.h"

#include <algorithm>

#include "framework/device_context.h"
#include "framework/frame_window.h"
#include "platform/api/messages.h"
#include "resources/resource_ids.h"

namespace permora {

const MessageMap& AddrBar::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<AddrBar>(
        CDialogBar::GetMessageMap(), {
                                         {IDC_LOCATION, Notify::kTextChanged, &AddrBar::OnLocationChanged},
                                         {IDOK, Notify::kClicked, &AddrBar::OnEnter},
                                     });
    return kMap;
}

bool AddrBar::Create(CFrameWnd& frame, unsigned int templateId) {
    constexpr Rect kGoButton{2, 2, 18, 18};
    return CDialogBar::Create(frame, templateId) && goButton.Create(*this, kGoButton, ID_GO_TO_LOCATION) &&
           goButton.LoadBitmaps(IDB_GO_NORMAL, IDB_GO_PRESSED, IDB_GO_NORMAL, IDB_GO_DISABLED);
}

void AddrBar::SetLocationText(const std::string& text) {
    if (CWnd* field = GetDlgItem(IDC_LOCATION)) field->SetWindowText(text);
}

void AddrBar::OnLocationChanged() {
    if (const CWnd* field = GetDlgItem(IDC_LOCATION)) locationText = field->GetWindowText();
}

void AddrBar::OnEnter() {
    Notification pressed{.id = ID_GO_TO_LOCATION, .code = Notify::kClicked};
    OnCmdMsg(pressed);
}

void AddrBar::OnPaint(CDC& dc) {
    const CWnd* field = GetDlgItem(IDC_LOCATION);
    if (field == nullptr) return;
    const Rect caption{1, 4, field->GetWindowRect().left - GetWindowRect().left, 24};
    dc.DrawText("Location:", caption, TextStyle::kNormal);
}

// The field and the button keep their distances from the frame's right edge, and so from each other, whatever
// room the font gives the caption.
void AddrBar::Layout(const Rect& frame) {
    CWnd* field = GetDlgItem(IDC_LOCATION);
    if (field == nullptr) return;
    constexpr int kHeight = 23;
    constexpr int kGoMargin = 47;
    constexpr int kGoTop = 3;
    constexpr int kGoSize = 16;
    constexpr int kGap = 5;
    const Rect bar = GetWindowRect();
    const Rect rebar = GetParent()->GetWindowRect();
    const int width = frame.Width() - (bar.left - frame.left);
    const Point place{bar.left - rebar.left, bar.top - rebar.top};
    MoveWindow({place.x, place.y, place.x + width, place.y + kHeight});
    const Rect before = field->GetWindowRect();
    const int left = before.left - bar.left;
    const int top = before.top - bar.top;
    const int goLeft = width - kGoMargin;
    field->MoveWindow({left, top, std::max(goLeft - kGap, left), top + kHeight});
    goButton.MoveWindow({goLeft, kGoTop, goLeft + kGoSize, kGoTop + kGoSize});
    RedrawWindow();
}

}  // namespace permora
