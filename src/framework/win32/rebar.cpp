// The rebar: bars side by side, each with a gripper. Where the frame is too narrow for all of them, the last
// ones get a row of their own.
#include <vector>

#include "framework/frame_native.h"
#include "framework/styles.h"
#include "framework/win32/frame.h"

namespace permora {
namespace win32 {
namespace {

class ReBarWindow final : public SystemWindow<NativeReBar> {
  public:
    // As wide as its frame from the beginning: bands that do not fit would keep a row of their own.
    ReBarWindow(CWnd& window, CWnd& parent)
        : SystemWindow(window, {0, 0, parent.GetClientRect().Width(), 0}) {
        constexpr DWORD kStyle =
            RBS_FIXEDORDER | RBS_VARHEIGHT | CCS_NODIVIDER | CCS_NORESIZE | CCS_NOPARENTALIGN;
        Adopt(MakeChild(parent,
                        {.className = REBARCLASSNAMEW,
                         .style = kStyle | WS_CLIPCHILDREN | WS_CLIPSIBLINGS,
                         .extendedStyle = WS_EX_CONTROLPARENT,
                         .rect = place},
                        0, {}));
    }

    void AddBand(CWnd& bar, int leastWidth) override {
        bands.push_back({&bar, leastWidth});
        REBARBANDINFOW band = Look(bands.back(), RBBIM_CHILD | RBBIM_STYLE | RBBIM_SIZE);
        Ask(RB_INSERTBANDW, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&band));
        // How wide the gripper is, the system tells of a band that is there.
        const WPARAM index = bands.size() - 1;
        RECT borders{};
        Ask(RB_GETBANDBORDERS, index, reinterpret_cast<LPARAM>(&borders));
        band.fMask = RBBIM_SIZE;
        band.cx += static_cast<UINT>(borders.left + borders.right);
        Ask(RB_SETBANDINFOW, index, reinterpret_cast<LPARAM>(&band));
        // The Tab key goes in the order of the bars.
        SetWindowPos(bar.GetSafeHwnd(), HWND_BOTTOM, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    }
    void LayOut() override {
        for (std::size_t i = 0; i < bands.size(); ++i)
            Ask(RB_SHOWBAND, i, (bands[i].bar->GetStyle() & WS_VISIBLE) != 0 ? TRUE : FALSE);
    }
    void Move(const Rect& rect) override {
        for (std::size_t i = 0; i < bands.size(); ++i) {
            const REBARBANDINFOW band = Look(bands[i], 0);
            Ask(RB_SETBANDINFOW, i, reinterpret_cast<LPARAM>(&band));
        }
        SystemWindow::Move(rect);
    }
    Size PreferredSize() const override {
        return {0, ToLogical(static_cast<int>(SendMessageW(Own(), RB_GETBARHEIGHT, 0, 0)), Dpi())};
    }

  protected:
    std::optional<LRESULT> OnReflected(const Message& message) override {
        if (message.code != WM_NOTIFY) return std::nullopt;
        const auto& header = *reinterpret_cast<const NMHDR*>(message.wider);
        if (header.code != static_cast<UINT>(RBN_HEIGHTCHANGE)) return std::nullopt;
        if (auto* frame = FrameWindow::Around(Own())) frame->PostLayout();
        return 0;
    }

  private:
    struct Band {
        CWnd* bar;  // a child window, which goes before this one
        int leastWidth;
    };

    LRESULT Ask(UINT question, WPARAM wide, LPARAM wider) const {
        return SendMessageW(Own(), question, wide, wider);
    }
    // How a band is to be at the window's resolution: its least size, and what `mask` names besides.
    REBARBANDINFOW Look(const Band& shown, UINT mask) const {
        const auto* native = dynamic_cast<NativeWindow*>(MessageTarget::Of(shown.bar->GetSafeHwnd()));
        const Size size = native->PreferredSize();
        REBARBANDINFOW band{};
        band.cbSize = sizeof band;
        band.fMask = mask | RBBIM_CHILDSIZE;
        band.fStyle = RBBS_GRIPPERALWAYS;
        band.hwndChild = shown.bar->GetSafeHwnd();
        band.cxMinChild = static_cast<UINT>(ToDevice(shown.leastWidth, Dpi()));
        band.cyMinChild = static_cast<UINT>(ToDevice(size.cy, Dpi()));
        band.cx = static_cast<UINT>(ToDevice(size.cx, Dpi()));
        return band;
    }

    std::vector<Band> bands;
};

}  // namespace
}  // namespace win32

std::unique_ptr<NativeReBar> MakeNativeReBar(CWnd& window, CWnd& parent) {
    return std::make_unique<win32::ReBarWindow>(window, parent);
}

}  // namespace permora
