// CHelpWindow: the program's own window of help, beside all others.
#pragma once

#include <optional>
#include <string>

#include "framework/dialog.h"
#include "framework/page_view.h"

namespace permora {

// It is open beside the window that it explains, also while that is modal. Closing hides it: it keeps its
// place, its size and the way through the pages as long as the program runs.
class CHelpWindow : public CDialog {
  public:
    // Reads the pages in the folder `help` of `programFolder`, and nothing else. `mainWindow` is the one
    // with which it goes.
    CHelpWindow(CWnd* mainWindow, const std::string& programFolder);
    ~CHelpWindow() override { DestroyWindow(); }

    // Shows a page, or a place in it ("editor.html#owner"), and gets the keyboard. False: the page is not
    // there.
    bool Show(const std::string& place);

  protected:
    bool OnInitDialog() override;
    void OnOK() override {}
    void OnCancel() override;
    const MessageMap& GetMessageMap() const override;

  private:
    CPageView* Page() const;
    void GoBack();
    void GoForward();
    void ShowContents();
    void ShowWays();

    const std::string folder;  // of the pages, with a separator at its end
};

// A page of the help in `folder`, without the row of links to the other pages with which it begins and
// without its footer. Nothing when there is no such page, or `name` is not the bare name of one.
std::optional<std::string> ReadHelpPage(const std::string& folder, const std::string& name);

}  // namespace permora
