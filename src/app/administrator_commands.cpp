// What the main window says where something is missing, and its way to the rights of the administrator.
#include <memory>
#include <string>

#include "app/administrator_start.h"
#include "app/command_line.h"
#include "app/main_frame.h"
#include "framework/long_work.h"
#include "framework/resource_templates.h"
#include "platform/accounts.h"
#include "platform/administrator.h"
#include "platform/shell_icons.h"
#include "resources/resource_ids.h"
#include "security/account_lookup.h"
#include "security/message_boxes.h"
#include "security/missing_rights.h"

namespace permora {

void CMainFrame::OfferAdministrator() {
    constexpr int kSecurityMenu = 3;
    offersAdministrator = CanAskForAdministrator();
    if (!offersAdministrator) return;
    CMenu menu = GetMenu().GetSubMenu(kSecurityMenu);
    menu.AppendSeparator();
    const std::shared_ptr<const ShellPicture> shield = FindShieldPicture();
    const CIcon icon = shield ? CIcon::FromPixels({shield->width, shield->height}, shield->pixels)
                              : CIcon::Load(IDR_MAIN_FRAME);  // the program's own shield
    menu.AppendCommand(ID_RESTART_AS_ADMINISTRATOR, "Restart as &Administrator", icon);
}

// This window stays until the other one is there.
void CMainFrame::RestartAsAdministrator() {
    CommandLine shown;
    if (view.IsShowing(PlaceKind::kFolder)) shown.paths.push_back(view.Rows().Folder());
    AdministratorStart start = AdministratorStart::kFailed;
    DoLongWork(*this, [&] {
        int exitCode = 0;
        start = StartAsAdministrator(shown, AdministratorWait::kForStart, exitCode);
    });
    if (start == AdministratorStart::kStarted)
        PostClose();
    else
        ShowErrorBox(GetSafeHwnd(), FailureText(start).c_str());
}

// Takes the place of "Ready" alone: prompts and what is going on pass.
void CMainFrame::ShowWhatIsMissing() {
    constexpr int kMessagePane = 0;
    std::string text = OfflineText(StateOfDomain());
    if (text.empty() && offersAdministrator && hasMissedRights)
        text = "Rights are missing: the Security menu can restart the program as administrator";
    const std::string ready = LoadResourceString(IDS_IDLE_MESSAGE);
    const std::string shown = statusBarWnd.GetPaneText(kMessagePane);
    if (shown == ready || (shown == missingText && !shown.empty()))
        statusBarWnd.SetPaneText(kMessagePane, text.empty() ? ready : text);
    missingText = text;
}

}  // namespace permora
