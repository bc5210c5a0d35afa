#include "framework/win32/pane.h"

#include <uxtheme.h>

#include "framework/styles.h"

namespace permora {
namespace win32 {
namespace {

class PaintContext : public CDC {
  public:
    PaintContext(HDC painted, UINT resolution) : context(painted), dpi(resolution) {
        SetBkMode(context, TRANSPARENT);
        ::SetTextColor(context, GetSysColor(COLOR_BTNTEXT));
    }
    void SetTextColor(Colour colour) override {
        ::SetTextColor(context, RGB(colour.red, colour.green, colour.blue));
    }
    void DrawText(const std::string& text, const Rect& rect, TextStyle style) override {
        LOGFONTW look{};
        GetObjectW(MessageFont(dpi), sizeof look, &look);
        look.lfUnderline = style == TextStyle::kUnderlined ? TRUE : FALSE;
        HFONT font = CreateFontIndirectW(&look);
        HGDIOBJ before = SelectObject(context, font);
        const std::wstring line = Wide(text);
        RECT area = ToDevice(rect, dpi);
        DrawTextW(context, line.data(), static_cast<int>(line.size()), &area,
                  DT_LEFT | DT_TOP | DT_SINGLELINE | DT_NOPREFIX);
        SelectObject(context, before);
        DeleteObject(font);
    }

  private:
    HDC context;
    UINT dpi;
};

}  // namespace

bool RegisterOwn(const wchar_t* name, UINT style, LPCSTR cursor) {
    WNDCLASSEXW description{};
    description.cbSize = sizeof description;
    description.style = style;
    description.lpfnWndProc = DefWindowProcW;
    description.hInstance = GetModuleHandleW(nullptr);
    description.hCursor = LoadCursorA(nullptr, cursor);
    description.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
    description.lpszClassName = name;
    return RegisterClassExW(&description) != 0;
}

const wchar_t* OwnClass() {
    constexpr const wchar_t* kName = L"PermoraWindow";
    static const bool kIsRegistered = RegisterOwn(kName, CS_DBLCLKS, IDC_ARROW);
    return kIsRegistered ? kName : nullptr;
}

void PaintWith(HWND window, const std::function<void(CDC&)>& paint) {
    PAINTSTRUCT painting{};
    HDC context = BeginPaint(window, &painting);
    {
        PaintContext shown(context, GetDpiForWindow(window));
        paint(shown);
    }
    EndPaint(window, &painting);
}

PaneWindow::PaneWindow(CWnd& window, CWnd& parent, unsigned int id) : PaintedWindow(window, {}) {
    HWND made = MakeChild(
        parent, {.className = OwnClass(), .style = WS_CLIPSIBLINGS, .extendedStyle = WS_EX_CONTROLPARENT}, id,
        {});
    Adopt(made);
    // A page stands in front of the tabs that frame it.
    SetWindowPos(made, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
}

// On a bar it has the bar's own background.
LRESULT PaneWindow::OnMessage(const Message& message) {
    if (message.code != WM_ERASEBKGND || ClassOf(GetParent(Own())) != REBARCLASSNAMEW)
        return PaintedWindow::OnMessage(message);
    DrawThemeParentBackground(Own(), reinterpret_cast<HDC>(message.wide), nullptr);
    return TRUE;
}

}  // namespace win32

std::unique_ptr<NativeWindow> MakeNativePane(CWnd& window, CWnd& parent, unsigned int templateId) {
    return std::make_unique<win32::PaneWindow>(window, parent, templateId);
}

}  // namespace permora
