#include "app/about_dialog.h"

#include "app/help_commands.h"
#include "framework/device_context.h"
#include "framework/dialog_controls.h"
#include "framework/frame_window.h"
#include "resources/resource_ids.h"

namespace permora {
namespace {

// The link behind the label "Visit: ", in pixels where the dialog's base units are six by thirteen.
constexpr Rect kLink{110, 218, 250, 234};
constexpr Size kLinkUnits{6, 13};
constexpr Colour kLinkColour{0, 0, 255};

}  // namespace

CAboutDlg::CAboutDlg(CWnd* ownerWindow) : CDialog(IDD_ABOUT, ownerWindow) {}

bool CAboutDlg::OnInitDialog() {
    CDialog::OnInitDialog();
    // By definition a rectangle of four by eight dialog units.
    const Rect base = DialogUnitsToPixels({0, 0, 4, 8});
    linkRect = {kLink.left * base.right / kLinkUnits.cx, kLink.top * base.bottom / kLinkUnits.cy,
                kLink.right * base.right / kLinkUnits.cx, kLink.bottom * base.bottom / kLinkUnits.cy};
    return true;
}

void CAboutDlg::OnPaint(CDC& dc) {
    dc.SetTextColor(kLinkColour);
    dc.DrawText(kWebSite, linkRect, TextStyle::kUnderlined);
}

Handled CAboutDlg::OnMouseMove(Point client) {
    SetCursor(linkRect.Contains(client) ? Cursor::kHand : Cursor::kArrow);
    return CDialog::OnMouseMove(client);
}

Handled CAboutDlg::OnLButtonDown(Point client) {
    if (linkRect.Contains(client)) OpenWebSite(GetSafeHwnd());
    return CDialog::OnLButtonDown(client);
}

}  // namespace permora
