// The seam of frame windows, their menus and their bars, beside native.h.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "framework/command_routing.h"
#include "framework/frame_window.h"
#include "framework/menu.h"
#include "framework/native.h"
#include "framework/resource_templates.h"

namespace permora {

// The class library's numbers of these bars, which the commands that show and hide them share.
inline constexpr unsigned int kToolBarId = 59392;
inline constexpr unsigned int kStatusBarId = 59393;

// Receives the events of a frame. Implemented by the shared half. Commands and close requests come after the
// back end has finished the event that caused them, since they may destroy the frame.
class FrameEvents {
  public:
    virtual ~FrameEvents() = default;
    virtual void OnMenuOpening(CMenu::Items& items) = 0;  // a pop-up, before it is shown
    virtual void OnHighlight(unsigned int id) = 0;        // a command in a menu or toolbar; 0: no longer
    virtual void OnChosen(unsigned int id) = 0;           // by menu, toolbar or key
    virtual void OnEscape(unsigned int id) = 0;           // by the key Escape
    virtual void OnCloseRequest() = 0;
    virtual void OnIdle() = 0;  // no event is waiting
};

// The client area is below the menu. Whether the window's rectangle has in it the frame that the desktop
// draws is the back end's choice, the same for all functions: the width of that frame may be unknown before
// the window is shown, and a stored rectangle would grow by it.
class NativeFrame : public NativeWindow {
  public:
    using NativeWindow::NativeWindow;
    virtual void SetMenu(const CMenu& menu) = 0;
    // Keys act while no modal window is open. An edit field that has the focus keeps its own editing keys.
    virtual void SetAccelerators(std::span<const AcceleratorTemplate> accelerators) = 0;
    virtual void SetIcon(const CIcon& icon) = 0;
    virtual WindowPlacement Placement() const = 0;
    virtual void Place(const WindowPlacement& placement) = 0;  // shows the window
    virtual void Activate() = 0;
    virtual void PostClose() = 0;
};

struct ToolButton {
    unsigned int id = 0;  // 0: separator
    CommandPrompt prompt;
};

class NativeToolBar : public NativeWindow {
  public:
    using NativeWindow::NativeWindow;
    virtual void SetButtons(std::span<const ToolButton> buttons) = 0;
    virtual void SetImages(const CImageList& images) = 0;  // separators not counted
    virtual void TurnImagesWithLayout(std::span<const unsigned int> ids) = 0;
    virtual void SetTips(bool enabled) = 0;
    virtual void ShowEnabled(unsigned int id, bool enabled) = 0;
    virtual void ShowPressed(unsigned int id, bool pressed) = 0;
};

class NativeReBar : public NativeWindow {
  public:
    using NativeWindow::NativeWindow;
    // Takes the native window of `bar` in. A narrow window leaves it `leastWidth` logical pixels.
    virtual void AddBand(CWnd& bar, int leastWidth) = 0;
    virtual void LayOut() = 0;  // bands of hidden bars take no room
};

class NativeStatusBar : public NativeWindow {
  public:
    static constexpr int kStretch = 0;
    using NativeWindow::NativeWindow;
    virtual void SetPanes(std::span<const int> widths) = 0;  // logical pixels, or kStretch
    virtual void SetPaneWidth(int pane, int width) = 0;
    virtual void SetPane(int pane, const std::string& text) = 0;
};

// ---- Made by the back end. `events` outlives the window. ----

std::unique_ptr<NativeFrame> MakeNativeFrame(CWnd& window, unsigned int id, FrameEvents& events);
std::unique_ptr<NativeToolBar> MakeNativeToolBar(CWnd& window, CWnd& parent, FrameEvents& events);
std::unique_ptr<NativeReBar> MakeNativeReBar(CWnd& window, CWnd& parent);
std::unique_ptr<NativeStatusBar> MakeNativeStatusBar(CWnd& window, CWnd& parent);
// As CSplitter::Create.
std::unique_ptr<NativeWindow> MakeNativeSplitter(CWnd& window, CWnd& parent,
                                                 std::function<void(int left)> moved,
                                                 std::function<void()> dropped);
// Runs `onEnter` when Enter is pressed in `pane` and no control uses it. Runs `onEscape` at Escape, which
// then does not act as an accelerator.
void WatchKeys(CWnd& pane, std::function<void()> onEnter, std::function<void()> onEscape);

// Shows a menu at a screen position and returns the chosen command, 0 for none. `highlight` is called with
// each entry that the user moves to, and with 0 at the end.
unsigned int TrackNativeMenu(const CMenu& menu, Point screen, CWnd& owner,
                             const std::function<void(unsigned int id)>& highlight);

// The areas of the screens in which windows may stand.
std::vector<Rect> ScreenAreas();

}  // namespace permora
