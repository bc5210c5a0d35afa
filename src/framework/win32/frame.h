// The window of a frame: the system's, with its menu.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "framework/frame_native.h"
#include "framework/resource_templates.h"
#include "framework/win32/menus.h"
#include "framework/win32/top_window.h"
#include "framework/win32/window.h"

namespace permora::win32 {

// The window's rectangle has the frame around it in it. Placements are counted at the system's resolution,
// whichever display the window is on, so that one comes back to the same place.
class FrameWindow final : public SystemWindow<NativeFrame>, public TopWindow {
  public:
    FrameWindow(CWnd& window, FrameEvents& listener);
    ~FrameWindow() override;

    // The one that `window` stands in; null for others.
    static FrameWindow* Around(HWND window);

    void SetVisible(bool visible) override;
    void Move(const Rect& rect) override;
    Rect RectInParent() const override { return ScreenRect(); }
    void SetToolTip(const std::string& /*text*/) override {}
    void OnOtherResolution() override {}  // its children follow, and the system gives it a size

    void SetMenu(const CMenu& shown) override;
    void SetAccelerators(std::span<const AcceleratorTemplate> given) override;
    void SetIcon(const CIcon& icon) override { ShowIcon(icon); }
    WindowPlacement Placement() const override;
    void Place(const WindowPlacement& placement) override;
    void Activate() override;
    void PostClose() override { Post(Request::kClose); }

    bool UseMessage(const MSG& message) override;
    void MoveFocus(int direction, HWND leaving = nullptr) override;
    void OnIdle();
    void PostChosen(unsigned int id) { Post(Request::kChosen, id); }
    // A bar has got another height.
    void PostLayout() { Post(Request::kLayout); }

  protected:
    LRESULT OnMessage(const Message& message) override;

  private:
    enum class Request : WPARAM { kChosen, kEscape, kClose, kLayout };
    static constexpr UINT kRequested = WM_APP + 1;

    void Post(Request request, unsigned int id = 0) {
        PostMessageW(Own(), kRequested, static_cast<WPARAM>(request), static_cast<LPARAM>(id));
    }
    void Serve(Request request, unsigned int id);
    bool UseKey(const MSG& message);
    bool UseWatchedKey(const MSG& message);
    bool UseAccelerator(const MSG& message);
    bool IsLate(const MSG& message) const;
    void OnSessionEnd();

    FrameEvents& events;
    std::unique_ptr<SystemMenu> menu;
    std::vector<AcceleratorTemplate> accelerators;
    std::optional<DWORD> givenBack;  // when a modal window gave the keyboard back, as messages count time
};

}  // namespace permora::win32
