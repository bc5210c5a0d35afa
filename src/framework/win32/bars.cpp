// Toolbar and status bar of this back end.
#include <algorithm>
#include <string>
#include <vector>

#include "framework/frame_native.h"
#include "framework/styles.h"
#include "framework/win32/image.h"
#include "framework/win32/window.h"

namespace permora {
namespace win32 {
namespace {

// The system's bars would place themselves at an edge of their parent, which the frame and the rebar do.
constexpr DWORD kPlacedByParent = CCS_NODIVIDER | CCS_NORESIZE | CCS_NOPARENTALIGN;

// One stop of the Tab key, within which the arrow keys move. A click does not move the focus.
class ToolBarWindow final : public SystemWindow<NativeToolBar> {
  public:
    ToolBarWindow(CWnd& window, CWnd& parent, FrameEvents& listener)
        : SystemWindow(window, {}), events(listener) {
        constexpr DWORD kStyle = TBSTYLE_FLAT | TBSTYLE_LIST | TBSTYLE_TOOLTIPS | TBSTYLE_TRANSPARENT;
        Adopt(MakeChild(parent,
                        {.className = TOOLBARCLASSNAMEW,
                         .style = kStyle | kPlacedByParent | WS_TABSTOP | WS_CLIPSIBLINGS},
                        0, {}));
        Ask(TB_BUTTONSTRUCTSIZE, sizeof(TBBUTTON));
        // A button's text is its tip and its name for assistive technology.
        Ask(TB_SETEXTENDEDSTYLE, 0, TBSTYLE_EX_MIXEDBUTTONS | TBSTYLE_EX_DOUBLEBUFFER);
    }
    ~ToolBarWindow() override {
        DestroyOwn();  // before the images that it shows
        if (images != nullptr) ImageList_Destroy(images);
    }

    void SetButtons(std::span<const ToolButton> made) override;
    void SetImages(const CImageList& shown) override {
        icons = shown.Shared();
        ShowImages();
    }
    // Windows whose lines go from right to left are not made here yet.
    void TurnImagesWithLayout(std::span<const unsigned int> /*ids*/) override {}
    void SetTips(bool enabled) override {
        HWND tips = reinterpret_cast<HWND>(Ask(TB_GETTOOLTIPS));
        SendMessageW(tips, TTM_ACTIVATE, enabled ? TRUE : FALSE, 0);
    }
    void ShowEnabled(unsigned int id, bool enabled) override {
        if ((Ask(TB_ISBUTTONENABLED, id) != 0) != enabled) Ask(TB_ENABLEBUTTON, id, enabled ? TRUE : FALSE);
    }
    void ShowPressed(unsigned int id, bool pressed) override {
        Ask(TB_CHECKBUTTON, id, pressed ? TRUE : FALSE);
    }
    Size PreferredSize() const override {
        SIZE size{};
        Ask(TB_GETMAXSIZE, 0, reinterpret_cast<LPARAM>(&size));
        return {ToLogical(size.cx, Dpi()), ToLogical(size.cy, Dpi())};
    }
    void OnOtherResolution() override {
        SystemWindow::OnOtherResolution();
        ShowImages();
    }

  protected:
    LRESULT OnMessage(const Message& message) override;
    std::optional<LRESULT> OnReflected(const Message& message) override;

  private:
    static constexpr int kNone = -1;
    static constexpr UINT kChosen = WM_APP + 1;

    LRESULT Ask(UINT question, WPARAM wide = 0, LPARAM wider = 0) const {
        return SendMessageW(Own(), question, wide, wider);
    }
    void ShowImages();
    int HotButton() const { return static_cast<int>(Ask(TB_GETHOTITEM)); }
    unsigned int CommandAt(int button) const;
    void MoveTo(int from, int step);
    bool OnKey(WPARAM key);

    FrameEvents& events;
    std::shared_ptr<CImageList::Images> icons;
    HIMAGELIST images = nullptr;
    int lastHot = kNone;  // when the keyboard was here last
};

void ToolBarWindow::SetButtons(std::span<const ToolButton> made) {
    while (Ask(TB_DELETEBUTTON, 0) != 0) {
    }
    int image = 0;
    for (const ToolButton& each : made) {
        const std::wstring tip = Wide(each.prompt.tip);
        TBBUTTON button{};
        button.fsState = TBSTATE_ENABLED;
        button.fsStyle = each.id != 0 ? BTNS_BUTTON : BTNS_SEP;
        button.idCommand = static_cast<int>(each.id);
        if (each.id != 0) {
            button.iBitmap = image++;
            button.iString = reinterpret_cast<INT_PTR>(tip.c_str());
        }
        Ask(TB_ADDBUTTONSW, 1, reinterpret_cast<LPARAM>(&button));
    }
}

void ToolBarWindow::ShowImages() {
    if (icons == nullptr) return;
    HIMAGELIST before = std::exchange(images, MakeImageList(icons.get(), Dpi()));
    Ask(TB_SETIMAGELIST, 0, reinterpret_cast<LPARAM>(images));
    Ask(TB_AUTOSIZE);
    if (before != nullptr) ImageList_Destroy(before);
}

// 0 for a separator and for none.
unsigned int ToolBarWindow::CommandAt(int button) const {
    TBBUTTON found{};
    if (button < 0 || Ask(TB_GETBUTTON, static_cast<WPARAM>(button), reinterpret_cast<LPARAM>(&found)) == 0)
        return 0;
    return static_cast<unsigned int>(found.idCommand);
}

// To the next button after `from` in that direction that can be used.
void ToolBarWindow::MoveTo(int from, int step) {
    const int count = static_cast<int>(Ask(TB_BUTTONCOUNT));
    for (int button = from + step; button >= 0 && button < count; button += step) {
        const unsigned int id = CommandAt(button);
        if (id == 0 || Ask(TB_ISBUTTONENABLED, id) == 0) continue;
        Ask(TB_SETHOTITEM, static_cast<WPARAM>(button));
        lastHot = button;
        events.OnHighlight(id);
        return;
    }
}

bool ToolBarWindow::OnKey(WPARAM key) {
    switch (key) {
        case VK_LEFT:
        case VK_UP:
            MoveTo(HotButton(), -1);
            return true;
        case VK_RIGHT:
        case VK_DOWN:
            MoveTo(HotButton(), 1);
            return true;
        case VK_RETURN:
        case VK_SPACE:
            if (const unsigned int id = CommandAt(HotButton()); id != 0 && Ask(TB_ISBUTTONENABLED, id) != 0)
                PostMessageW(Own(), kChosen, id, 0);
            return true;
        default:
            return false;
    }
}

LRESULT ToolBarWindow::OnMessage(const Message& message) {
    switch (message.code) {
        case kChosen:
            events.OnChosen(static_cast<unsigned int>(message.wide));
            return 0;
        case WM_KEYDOWN:
            if (OnKey(message.wide)) return 0;
            break;
        case WM_SETFOCUS: {
            const LRESULT answer = SystemWindow::OnMessage(message);
            MoveTo(std::max(lastHot, 0) - 1, 1);
            return answer;
        }
        case WM_KILLFOCUS: {
            const LRESULT answer = SystemWindow::OnMessage(message);
            Ask(TB_SETHOTITEM, static_cast<WPARAM>(kNone));
            events.OnHighlight(0);
            return answer;
        }
        default:
            break;
    }
    return SystemWindow::OnMessage(message);
}

std::optional<LRESULT> ToolBarWindow::OnReflected(const Message& message) {
    if (message.code == WM_COMMAND) {
        PostMessageW(Own(), kChosen, LOWORD(message.wide), 0);
        return 0;
    }
    if (message.code != WM_NOTIFY) return std::nullopt;
    const auto& header = *reinterpret_cast<const NMHDR*>(message.wider);
    if (header.code != static_cast<UINT>(TBN_HOTITEMCHANGE)) return std::nullopt;
    const auto& change = *reinterpret_cast<const NMTBHOTITEM*>(message.wider);
    const bool isLeaving = (change.dwFlags & HICF_LEAVING) != 0;
    events.OnHighlight(isLeaving ? 0 : static_cast<unsigned int>(change.idNew));
    return 0;
}

class StatusBarWindow final : public SystemWindow<NativeStatusBar> {
  public:
    StatusBarWindow(CWnd& window, CWnd& parent) : SystemWindow(window, {}) {
        Adopt(MakeChild(parent, {.className = STATUSCLASSNAMEW, .style = SBARS_SIZEGRIP | kPlacedByParent}, 0,
                        {}));
    }

    void SetText(const std::string& text) override { SetPane(0, text); }
    std::string Text() const override {
        std::wstring text(LOWORD(SendMessageW(Own(), SB_GETTEXTLENGTHW, 0, 0)) + 1U, L'\0');
        SendMessageW(Own(), SB_GETTEXTW, 0, reinterpret_cast<LPARAM>(text.data()));
        text.pop_back();
        return Utf8(text);
    }
    void SetPanes(std::span<const int> given) override {
        widths.assign(given.begin(), given.end());
        LayPanesOut();
    }
    void SetPaneWidth(int pane, int width) override {
        widths[static_cast<std::size_t>(pane)] = width;
        LayPanesOut();
    }
    void SetPane(int pane, const std::string& text) override {
        std::string line = text;
        std::ranges::replace(line, '\t', ' ');  // which would move the text to another side
        const bool isFramed = widths[static_cast<std::size_t>(pane)] != kStretch;
        SendMessageW(Own(), SB_SETTEXTW, static_cast<WPARAM>(pane) | (isFramed ? 0U : UINT{SBT_NOBORDERS}),
                     reinterpret_cast<LPARAM>(Wide(line).c_str()));
    }
    // A line of text and what is around it.
    Size PreferredSize() const override {
        constexpr int kAround = 6;
        const SIZE text = TextSize(L"X", Dpi(), 0, 0);
        return {0, ToLogical(text.cy, Dpi()) + kAround};
    }

  protected:
    LRESULT OnMessage(const Message& message) override {
        const LRESULT answer = SystemWindow::OnMessage(message);
        if (message.code == WM_SIZE) LayPanesOut();
        return answer;
    }

  private:
    // The panes' right edges; those that stretch share what the others leave.
    void LayPanesOut() {
        if (widths.empty()) return;
        int fixed = 0;
        for (const int width : widths)
            fixed += ToDevice(width, Dpi());
        RECT client{};
        ::GetClientRect(Own(), &client);
        const auto stretching = static_cast<LONG>(std::ranges::count(widths, kStretch));
        const LONG each = stretching != 0 ? std::max(client.right - fixed, 0L) / stretching : 0;
        std::vector<int> edges;
        LONG right = 0;
        for (const int width : widths) {
            right += width != kStretch ? ToDevice(width, Dpi()) : each;
            edges.push_back(right);
        }
        SendMessageW(Own(), SB_SETPARTS, edges.size(), reinterpret_cast<LPARAM>(edges.data()));
    }

    std::vector<int> widths;  // logical pixels
};

}  // namespace
}  // namespace win32

std::unique_ptr<NativeToolBar> MakeNativeToolBar(CWnd& window, CWnd& parent, FrameEvents& events) {
    return std::make_unique<win32::ToolBarWindow>(window, parent, events);
}

std::unique_ptr<NativeStatusBar> MakeNativeStatusBar(CWnd& window, CWnd& parent) {
    return std::make_unique<win32::StatusBarWindow>(window, parent);
}

}  // namespace permora
