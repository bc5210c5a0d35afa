// Controls without input: texts, pictures, frames and progress bars.
#include <algorithm>

#include "framework/styles.h"
#include "framework/win32/buttons.h"
#include "framework/win32/controls.h"
#include "framework/win32/image.h"
#include "framework/win32/pane.h"

namespace permora {
namespace win32 {
namespace {

// With SS_NOTIFY a click on a text presses the button that it labels.
class TextWindow final : public SystemWindow<NativeWindow> {
  public:
    TextWindow(CWnd& window, CWnd& parent, const ControlSpec& spec, const wchar_t* className,
               DWORD extendedStyle)
        : SystemWindow(window, spec.rect) {
        Adopt(MakeChild(
            parent,
            {.className = className, .style = spec.style, .extendedStyle = extendedStyle, .rect = spec.rect},
            spec.id, spec.text));
    }
    Size PreferredSize() const override {
        const UINT flags = (style & SS_NOPREFIX) != 0 ? UINT{DT_NOPREFIX} : 0U;
        const SIZE size = TextSize(TextOf(Own()), Dpi(), 0, flags | DT_EXPANDTABS);
        return {ToLogical(size.cx, Dpi()), ToLogical(size.cy, Dpi())};
    }
    void SetLabelled(CWnd& control) { labelled = &control; }

  protected:
    std::optional<LRESULT> OnReflected(const Message& message) override {
        if (message.code != WM_COMMAND || HIWORD(message.wide) != STN_CLICKED) return std::nullopt;
        auto* button = labelled != nullptr
                           ? dynamic_cast<ButtonWindow*>(MessageTarget::Of(labelled->GetSafeHwnd()))
                           : nullptr;
        if (button == nullptr || ::IsWindowEnabled(button->Own()) == 0) return 0;
        button->SetFocus();
        button->Click();
        return 0;
    }

  private:
    CWnd* labelled = nullptr;
};

// Draws its picture as large as fits, sharp on every display. The mouse reaches what is behind it.
class PictureWindow final : public SystemWindow<NativeWindow> {
  public:
    PictureWindow(CWnd& window, CWnd& parent, const ControlSpec& spec)
        : SystemWindow(window, spec.rect),
          picture((spec.style & SS_TYPEMASK) == SS_ICON ? CIcon::Load(spec.pictureId)
                                                        : CIcon::FromBitmap(spec.pictureId)) {
        Adopt(MakeChild(parent, {.className = OwnClass(), .rect = spec.rect}, spec.id, spec.text));
    }

  protected:
    LRESULT OnMessage(const Message& message) override {
        if (message.code == WM_NCHITTEST) return HTTRANSPARENT;
        if (message.code != WM_PAINT) return SystemWindow::OnMessage(message);
        PAINTSTRUCT painting{};
        HDC context = BeginPaint(Own(), &painting);
        RECT area{};
        ::GetClientRect(Own(), &area);
        DrawImage(context, picture, area);
        EndPaint(Own(), &painting);
        return 0;
    }

  private:
    CIcon picture;
};

class ProgressBarWindow final : public SystemWindow<NativeProgressBar> {
  public:
    ProgressBarWindow(CWnd& window, CWnd& parent, const ControlSpec& spec) : SystemWindow(window, spec.rect) {
        Adopt(MakeChild(parent, {.className = PROGRESS_CLASSW, .style = spec.style, .rect = spec.rect},
                        spec.id, {}));
        ShowMotion(spec.style);
    }
    std::string Text() const override { return std::to_string(SendMessageW(Own(), PBM_GETPOS, 0, 0)) + "%"; }
    void StyleChanged(DWORD /*before*/) override {
        const auto others = static_cast<DWORD>(GetWindowLongW(Own(), GWL_STYLE)) & ~DWORD{PBS_MARQUEE};
        SetWindowLongW(Own(), GWL_STYLE, static_cast<LONG>(others | (style & PBS_MARQUEE)));
        ShowMotion(style);
    }
    void SetPosition(int percent) override {
        SendMessageW(Own(), PBM_SETPOS, static_cast<WPARAM>(std::clamp(percent, 0, 100)), 0);
    }

  private:
    void ShowMotion(DWORD styles) {
        SendMessageW(Own(), PBM_SETMARQUEE, (styles & PBS_MARQUEE) != 0 ? TRUE : FALSE, 0);
    }
};

}  // namespace

std::unique_ptr<NativeWindow> MakeStatic(CWnd& window, CWnd& parent, const ControlSpec& spec) {
    switch (spec.kind) {
        case ControlKind::kProgressBar:
            return std::make_unique<ProgressBarWindow>(window, parent, spec);
        case ControlKind::kStaticPicture:
            return std::make_unique<PictureWindow>(window, parent, spec);
        case ControlKind::kGroupBox:
            // Transparent: the mouse reaches what stands in it, and is painted before.
            return std::make_unique<TextWindow>(window, parent, spec, L"Button", WS_EX_TRANSPARENT);
        default:
            return std::make_unique<TextWindow>(window, parent, spec, L"Static", 0);
    }
}

}  // namespace win32

// The dialog manager finds what a mnemonic leads to by itself: the control behind the label.
void SetLabelTarget(CWnd& label, CWnd& target) {
    if (auto* text = dynamic_cast<win32::TextWindow*>(win32::MessageTarget::Of(label.GetSafeHwnd())))
        text->SetLabelled(target);
    if (auto* button = dynamic_cast<win32::ButtonWindow*>(win32::MessageTarget::Of(target.GetSafeHwnd())))
        button->SetLabel(label.GetSafeHwnd());
}

}  // namespace permora
