// CMainApp: the program. Makes the main window and answers the commands of the Help menu.
#pragma once

#include <memory>

#include "app/main_frame.h"

namespace permora {

class CMainApp : public CWinApp {
  public:
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

    std::unique_ptr<CMainFrame> frame;
};

}  // namespace permora
