// CFrameWnd: a top-level window with menu, bars and one view that fills the rest.
#pragma once

#include <memory>

#include "framework/images.h"
#include "framework/menu.h"
#include "framework/window.h"

namespace permora {

enum class ShowState { kNormal, kMaximised };

// The placement of a frame: its rectangle when not maximised, in screen coordinates, and how it is shown.
struct WindowPlacement {
    Rect normalRect;
    ShowState showState = ShowState::kNormal;
};

// Commands from menu, accelerators, toolbar and context menus go through OnCmdMsg. Before a menu opens and
// while the program is idle, Notify::kUpdateCommand updates the state of each command. A command without
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
    WindowPlacement GetPlacement() const;
    void SetPlacement(const WindowPlacement& placement);  // shows the window
    // The child that fills the area beside the bars. It gets the focus of the frame.
    void SetView(CWnd& view);
    // Runs a command as the menu does: nothing happens while the command or the frame is disabled.
    void RunCommand(unsigned int id);
    // Shows the prompt of a command in the status bar; 0: removes it.
    void ShowPrompt(unsigned int id);
    void Activate();   // brings the window before the others and gives it the keyboard
    void PostClose();  // OnClose, after the messages before it

    bool OnCmdMsg(Notification& notification) override;  // this frame, then the application object

  protected:
    virtual bool OnCreate() { return true; }  // false: LoadFrame fails
    virtual void OnClose();                   // default: destroys the window and ends the message loop
    // Escape first stops what goes on. False: nothing does, so its command runs.
    virtual bool StopWork() { return false; }
    void OnSize(Size client) override;  // lays bars and view out
    void OnSetFocus() override;
    const MessageMap& GetMessageMap() const override;

  private:
    friend struct WindowAccess;
    struct Parts;

    void RecalcLayout();
    // Standard commands 59392, 59393: show or hide the toolbar and the status bar.
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
    // Called before an open main window is destroyed because the program ends for another reason than its
    // closing.
    virtual void OnEndSession() {}
    // F1 was pressed in `window`, a dialog or a sheet. `templateId` is the dialog's, or that of the sheet's
    // page.
    virtual void OnHelp(CWnd& /*window*/, unsigned int /*templateId*/) {}
    // Starts the toolkit, runs InitInstance and the message loop, and destroys the main window if it still
    // exists. Returns the exit code of the process.
    int Run(int argc, char** argv);
    CWnd* mainWindow = nullptr;
};
CWinApp* GetApp();

enum class Cursor { kArrow, kHand };
// Sets the pointer's shape for the window below it.
void SetCursor(Cursor cursor);

}  // namespace permora
