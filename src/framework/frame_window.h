// CFrameWnd: a top-level window with menu, bars and one view that fills the rest.
#pragma once

#include <memory>

#include "framework/images.h"
#include "framework/menu.h"
#include "framework/window.h"

namespace permora {

enum class ShowState { kNormal, kMaximised };

// Where a frame stands: its rectangle when not maximised, in screen coordinates, and how it is shown.
struct WindowPlacement {
    Rect normalRect;
    ShowState showState = ShowState::kNormal;
};

// Commands from menu, accelerators, toolbar and context menus go through OnCmdMsg; before a menu opens and
// while the program is idle each command's state is asked for (Notify::kUpdateCommand). A command without
// handler is disabled. Prompts (string resource of a command's id, split at the newline) show in status pane
// 0 while a menu entry is highlighted and as the toolbar's tips.
class CFrameWnd : public CWnd {
  public:
    CFrameWnd();
    ~CFrameWnd() override;

    // Makes the window from the frame resource `id` (menu, accelerators, icon, title string) and runs
    // OnCreate.
    bool LoadFrame(unsigned int id);
    CMenu GetMenu() const;
    void SetIcon(const CIcon& icon);
    WindowPlacement GetPlacement() const;
    void SetPlacement(const WindowPlacement& placement);  // shows the window
    // The child that fills what the bars leave. The frame's focus goes to it.
    void SetView(CWnd& view);
    void RecalcLayout();
    // Runs a command as the menu does: not while it or the frame is disabled.
    void RunCommand(unsigned int id);
    // Shows what the status bar says about a command; 0: what it said before.
    void ShowPrompt(unsigned int id);
    // Standard commands 59392, 59393: show or hide the toolbar and the status bar.
    void ShowControlBar(CWnd& bar, bool show);
    void PostClose();  // OnClose, once the messages before it are served

    bool OnCmdMsg(Notification& notification) override;  // this frame, then the application object

  protected:
    virtual bool OnCreate() { return true; }  // false: LoadFrame fails
    virtual void OnClose();                   // default: destroys the window and ends the message loop
    void OnSize(Size client) override;        // lays bars and view out
    void OnSetFocus() override;
    const MessageMap& GetMessageMap() const override;

  private:
    friend struct WindowAccess;
    struct Parts;

    void OnToggleBar(Notification& notification);
    void OnUpdateBar(Notification& notification);
    CWnd* ControlBar(unsigned int id) const;

    const std::unique_ptr<Parts> parts;
};

// The application object: exactly one, made before the message loop runs.
class CWinApp : public CCmdTarget {
  public:
    CWinApp();
    ~CWinApp() override;

    virtual bool InitInstance() = 0;
    // Before the main window goes that is still there: something other than its closing ends the program.
    virtual void OnEndSession() {}
    // Starts the toolkit, runs InitInstance and the message loop, and destroys the main window if it is still
    // there; the process's exit code.
    int Run(int argc, char** argv);
    CWnd* mainWindow = nullptr;
};
CWinApp* GetApp();

enum class Cursor { kArrow, kHand };
// The pointer's shape over the window that it is over.
void SetCursor(Cursor cursor);

}  // namespace permora
