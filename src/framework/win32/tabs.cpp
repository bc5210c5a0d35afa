// The row of tabs of a sheet.
#include "framework/styles.h"
#include "framework/win32/controls.h"
#include "framework/win32/window.h"

namespace permora::win32 {
namespace {

class TabsWindow final : public SystemWindow<NativeTabs> {
  public:
    TabsWindow(CWnd& window, CWnd& parent, const ControlSpec& spec) : SystemWindow(window, spec.rect) {
        Adopt(MakeChild(
            parent, {.className = WC_TABCONTROLW, .style = spec.style | WS_CLIPSIBLINGS, .rect = spec.rect},
            spec.id, {}));
    }
    std::string Text() const override {
        std::wstring text(kLongestText, L'\0');
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = text.data();
        item.cchTextMax = static_cast<int>(text.size());
        if (SendMessageW(Own(), TCM_GETITEMW, static_cast<WPARAM>(Selection()),
                         reinterpret_cast<LPARAM>(&item)) == 0)
            return {};
        return Utf8(item.pszText);
    }
    void InsertTab(int index, const std::string& text) override {
        std::wstring shown = Wide(text);
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = shown.data();
        SendMessageW(Own(), TCM_INSERTITEMW, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&item));
    }
    void RemoveTab(int index) override { SendMessageW(Own(), TCM_DELETEITEM, static_cast<WPARAM>(index), 0); }
    int Selection() const override { return static_cast<int>(SendMessageW(Own(), TCM_GETCURSEL, 0, 0)); }
    void Select(int index) override { SendMessageW(Own(), TCM_SETCURSEL, static_cast<WPARAM>(index), 0); }
    Size SizeAround(Size page) const override {
        RECT around = ToDevice(Rect{0, 0, page.cx, page.cy}, Dpi());
        SendMessageW(Own(), TCM_ADJUSTRECT, TRUE, reinterpret_cast<LPARAM>(&around));
        const Rect size = ToLogical(around, Dpi());
        return {size.Width(), size.Height()};
    }
    Rect PageArea() const override {
        RECT area = ToDevice(place, Dpi());
        SendMessageW(Own(), TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&area));
        return ToLogical(area, Dpi());
    }

  protected:
    std::optional<LRESULT> OnReflected(const Message& message) override {
        if (message.code != WM_NOTIFY ||
            reinterpret_cast<const NMHDR*>(message.wider)->code != static_cast<UINT>(TCN_SELCHANGE))
            return std::nullopt;
        ReportNotification(Notify::kSelectionChanged);
        return 0;
    }

  private:
    static constexpr std::size_t kLongestText = 256;
};

}  // namespace

std::unique_ptr<NativeWindow> MakeTabs(CWnd& window, CWnd& parent, const ControlSpec& spec) {
    return std::make_unique<TabsWindow>(window, parent, spec);
}

}  // namespace permora::win32
