// The splitter's native half.
#include <utility>

#include "framework/frame_native.h"
#include "framework/win32/pane.h"

namespace permora {
namespace win32 {
namespace {

// Of a class of its own, for its pointer.
const wchar_t* SplitterClass() {
    constexpr const wchar_t* kName = L"PermoraSplitter";
    static const bool kIsRegistered = RegisterOwn(kName, 0, IDC_SIZEWE);
    return kIsRegistered ? kName : nullptr;
}

class SplitterWindow final : public SystemWindow<NativeWindow> {
  public:
    SplitterWindow(CWnd& window, CWnd& parent, std::function<void(int left)> moved,
                   std::function<void()> dropped)
        : SystemWindow(window, {}), onMoved(std::move(moved)), onDropped(std::move(dropped)) {
        Adopt(MakeChild(parent, {.className = SplitterClass()}, 0, {}));
    }

  protected:
    LRESULT OnMessage(const Message& message) override {
        switch (message.code) {
            case WM_LBUTTONDOWN:
                grip = static_cast<short>(LOWORD(message.wider));
                isDragged = true;
                SetCapture(Own());
                return 0;
            case WM_MOUSEMOVE:
                if (isDragged) return Drag(message);
                break;
            case WM_LBUTTONUP:
                if (isDragged) ReleaseCapture();
                return 0;
            // Also when another window has taken the mouse.
            case WM_CAPTURECHANGED:
                if (std::exchange(isDragged, false)) onDropped();
                return 0;
            default:
                break;
        }
        return SystemWindow::OnMessage(message);
    }

  private:
    LRESULT Drag(const Message& message) const {
        POINT left{static_cast<short>(LOWORD(message.wider)) - grip, 0};
        MapWindowPoints(Own(), GetParent(Own()), &left, 1);
        onMoved(ToLogical(left.x, Dpi()));
        return 0;
    }

    std::function<void(int left)> onMoved;
    std::function<void()> onDropped;
    int grip = 0;  // where the bar was taken
    bool isDragged = false;
};

}  // namespace
}  // namespace win32

std::unique_ptr<NativeWindow> MakeNativeSplitter(CWnd& window, CWnd& parent,
                                                 std::function<void(int left)> moved,
                                                 std::function<void()> dropped) {
    return std::make_unique<win32::SplitterWindow>(window, parent, std::move(moved), std::move(dropped));
}

}  // namespace permora
