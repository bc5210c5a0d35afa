#include "app/main_app.h"

#include <utility>

#include "app/about_dialog.h"
#include "app/help_commands.h"
#include "app/help_topics.h"
#include "app/saved_list_notice.h"
#include "platform/administrator.h"
#include "platform/api/system.h"
#include "platform/host_path.h"
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

// As the system's own, but with no other argument than the folder.
CMainApp::CMainApp(const CommandLine& commandLine) : tellsOfStart(commandLine.tellsOfStart) {
    std::string line = R"("permora")";
    for (const std::string& path : commandLine.paths)
        line += " \"" + PathFromArgument(path.c_str()) + '"';
    startLine = std::move(line);
    if (!commandLine.paths.empty()) notice = SavedListNotice(commandLine.paths.front());
}

bool CMainApp::InitInstance() {
    frame = std::make_unique<CMainFrame>(startLine ? *startLine : GetCommandLineA());
    mainWindow = frame.get();
    if (!frame->LoadFrame(IDR_MAIN_FRAME)) return false;
    frame->RestorePlacement();
    frame->RedrawWindow();
    frame->TellOfStartFolder();
    if (tellsOfStart) TellOfStart();
    frame->TellOfInterruption();
    if (!notice.empty()) ShowInfoBox(frame->GetSafeHwnd(), notice.c_str());
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
