// CMainApp: the program. Makes the main window and answers the commands of the Help menu.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "app/command_line.h"
#include "app/main_frame.h"

namespace permora {

class CMainApp : public CWinApp {
  public:
    // On the folder of the process's command line.
    CMainApp() = default;
    // On the folder that `commandLine` names.
    explicit CMainApp(const CommandLine& commandLine);

    bool InitInstance() override;
    void OnEndSession() override;
    void OnHelp(CWnd& window, unsigned int templateId) override;

    // As the main window's, which is there from InitInstance on.
    void ShareFolder() { frame->ShareFolder(); }

  protected:
    const MessageMap& GetMessageMap() const override;

  private:
    void ShowAboutBox();
    void ShowHelp();
    void ShowSupportPage();
    void ShowWebSite();

    std::optional<std::string> startLine;  // nothing: the process's command line
    std::string notice;                    // shown when the window is there; empty: none
    bool tellsOfStart = false;
    std::unique_ptr<CMainFrame> frame;
};

}  // namespace permora
