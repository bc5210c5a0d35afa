#include "app/main_app.h"

#include "app/about_dialog.h"
#include "app/help_commands.h"
#include "app/help_topics.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"

namespace permora {

const MessageMap& CMainApp::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<CMainApp>(
        CWinApp::GetMessageMap(), {
                                      {ID_APP_ABOUT, Notify::kCommand, &CMainApp::ShowAboutBox},
                                      {ID_HELP_CONTENTS, Notify::kCommand, &CMainApp::ShowHelp},
                                      {ID_TECHNICAL_SUPPORT, Notify::kCommand, &CMainApp::ShowSupportPage},
                                      {ID_WEB_SITE, Notify::kCommand, &CMainApp::ShowWebSite},
                                  });
    return kMap;
}

bool CMainApp::InitInstance() {
    frame = std::make_unique<CMainFrame>();
    mainWindow = frame.get();
    if (!frame->LoadFrame(IDR_MAIN_FRAME)) return false;
    frame->RestorePlacement();
    frame->RedrawWindow();
    frame->TellOfInterruption();
    return true;
}

void CMainApp::OnEndSession() {
    frame->KeepSettings();
}

// In the program's own window, which can be read while the other one waits for its user.
void CMainApp::OnHelp(CWnd& window, unsigned int templateId) {
    if (!frame->ShowHelpPage(HelpPlaceOf(templateId)))
        ShowErrorBox(window.GetSafeHwnd(), "Cannot open help file");
}

void CMainApp::ShowAboutBox() {
    CAboutDlg(frame.get()).DoModal();
}

void CMainApp::ShowHelp() {
    OpenHelp(frame->GetSafeHwnd(), ProgramFolder(frame->Settings()),
             [this] { return frame->ShowHelpPage(kHelpContents); });
}

void CMainApp::ShowSupportPage() {
    OpenSupportPage(frame->GetSafeHwnd(), ProgramFolder(frame->Settings()));
}

void CMainApp::ShowWebSite() {
    OpenWebSite(frame->GetSafeHwnd());
}

}  // namespace permora
