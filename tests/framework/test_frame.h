// A small frame with all bars.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "framework/bars.h"
#include "framework/frame_window.h"
#include "resources/resource_ids.h"
#include "tests/support/ui_backend.h"

namespace permora {

// The handlers and their commands, in order.
using CommandLog = std::vector<std::string>;

class TestView : public CWnd {
  public:
    CommandLog log;
    using CWnd::OnCmdMsg;

  protected:
    void OnCopy() { log.emplace_back("view copy"); }
    const MessageMap& GetMessageMap() const override {
        static const MessageMap kMap = MakeMessageMap<TestView>(
            CWnd::GetMessageMap(), {
                                       {ID_EDIT_COPY, Notify::kCommand, &TestView::OnCopy},
                                   });
        return kMap;
    }
};

class TestFrame : public CFrameWnd {
  public:
    CImageList images;
    CToolBar toolBar;
    CDialogBar addressBar;
    CReBar reBar;
    CStatusBar statusBar;
    TestView view;
    CommandLog log;
    bool isCopyAllowed = true;
    bool closesByItself = true;
    bool isWorking = false;  // until it is told to stop
    std::function<void()> onPermissions;

    bool OnCmdMsg(Notification& notification) override {
        return view.OnCmdMsg(notification) || CFrameWnd::OnCmdMsg(notification);
    }
    // Shows it at a place that every screen has, and waits until it has the keyboard.
    bool Show() {
        if (!LoadFrame(IDR_MAIN_FRAME)) return false;
        SetPlacement({{20, 30, 720, 530}, ShowState::kNormal});
        return test::ServeEventsUntil([this] { return view.HasFocus(); });
    }

  protected:
    bool OnCreate() override {
        if (!view.CreateChild(*this, {}, 1) || !toolBar.Create(*this) ||
            !toolBar.LoadToolBar(IDR_MAIN_FRAME) || !addressBar.Create(*this, IDD_ADDRESS_BAR))
            return false;
        if (!reBar.Create(*this) || !reBar.AddBar(toolBar, 100) || !reBar.AddBar(addressBar, 100))
            return false;
        if (!statusBar.Create(*this)) return false;
        images.Create({16, 16});
        for (int button = 0; button < 15; ++button)
            images.Add(CIcon::Load(IDI_HELP));
        toolBar.SetImageList(images);
        statusBar.SetIndicators({CStatusBar::kSeparator, IDS_ITEM_COUNT_PANE});
        statusBar.SetPaneWidth(1, 200);
        SetView(view);
        return true;
    }
    void OnClose() override {
        log.emplace_back("close");
        if (closesByItself) CWnd::DestroyWindow();
    }
    bool StopWork() override { return std::exchange(isWorking, false); }
    void OnPermissions() {
        log.emplace_back("permissions");
        if (onPermissions) onPermissions();
    }
    void OnUpdateCopy(Notification& notification) { notification.state.enabled = isCopyAllowed; }
    const MessageMap& GetMessageMap() const override {
        static const MessageMap kMap = MakeMessageMap<TestFrame>(
            CFrameWnd::GetMessageMap(), {
                                            {ID_PERMISSIONS, Notify::kCommand, &TestFrame::OnPermissions},
                                            {ID_EDIT_COPY, Notify::kUpdateCommand, &TestFrame::OnUpdateCopy},
                                        });
        return kMap;
    }
};

}  // namespace permora
