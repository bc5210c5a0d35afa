// A frame with the browser in it, on a folder of its own that is the drive T.
#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

#include "browser/address_bar.h"
#include "browser/browser_view.h"
#include "browser/drive_rows.h"
#include "browser/file_clipboard.h"
#include "framework/frame_window.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/ui_driver.h"

namespace permora::test {

// Lets the system's services fail or the world change in the middle of a listing.
struct Faults {
    std::string opened;  // by the shell, which takes everything but "missing"
    std::function<void(const std::string& pattern)> onSearch;  // before each search of a folder
    int searchFailsAfter = -1;                                 // so many entries; -1: never
};
Faults& TheFaults();

class BrowserFrame : public CFrameWnd {
  public:
    std::string commandLine;
    CStatusBar statusBar;
    CReBar reBar;
    AddrBar addressBar;
    BrowserView view;

    bool OnCmdMsg(Notification& notification) override {
        return view.OnCmdMsg(notification) || CFrameWnd::OnCmdMsg(notification);
    }

  protected:
    bool OnCreate() override;
    bool StopWork() override { return view.StopWork(); }
    const MessageMap& GetMessageMap() const override;

  private:
    void OnGoToLocation() { view.GoToLocation(addressBar.locationText); }
    void OnOther() {}
};

class BrowserTest : public ::testing::Test {
  protected:
    static void Reset();
    BrowserTest();
    ~BrowserTest() override;

    // `path` of the drive T; empty: no argument.
    void Start(const std::string& path);
    WindowDriver Window() { return WindowDriver(frame.GetSafeHwnd()); }
    // The rows' texts in the first column.
    std::vector<std::string> Names();
    int Row(const std::string& name) { return Window().FindRow(BrowserView::kListId, name); }
    std::string Pane(int pane) { return frame.statusBar.GetPaneText(pane); }
    void ExpectError(const std::string& text);
    // Opens the row as a double click does.
    void Open(const std::string& name);

    test::TemporaryFolder folder;
    UiDriver ui;
    BrowserFrame frame;
    BrowserView& view = frame.view;
};

}  // namespace permora::test
