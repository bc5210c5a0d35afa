#include "framework/win32/buttons.h"

#include <algorithm>

#include "framework/styles.h"
#include "framework/win32/image.h"

namespace permora {
namespace win32 {
namespace {

// Radio buttons are not the system's automatic ones, whose groups depend on the order of the windows.
DWORD ButtonStyle(const ControlSpec& spec) {
    const DWORD others = spec.style & ~DWORD{BS_TYPEMASK};
    switch (spec.kind) {
        case ControlKind::kCheckBox:
            return others | BS_AUTOCHECKBOX | ((others & BS_MULTILINE) != 0 ? BS_TOP : 0);
        case ControlKind::kRadioButton:
            return others | BS_RADIOBUTTON | ((others & BS_MULTILINE) != 0 ? BS_TOP : 0);
        case ControlKind::kBitmapButton:
            return others | BS_OWNERDRAW;
        default:
            return others | BS_PUSHBUTTON;  // the dialog shows which one is the default
    }
}

bool IsUsable(const ButtonWindow& button) {
    return IsWindowVisible(button.Own()) != 0 && IsWindowEnabled(button.Own()) != 0;
}

}  // namespace

bool IsPushButton(HWND window) {
    if (window == nullptr || ClassOf(window) != L"Button") return false;
    const auto type = static_cast<DWORD>(GetWindowLongW(window, GWL_STYLE)) & BS_TYPEMASK;
    return type == BS_PUSHBUTTON || type == BS_DEFPUSHBUTTON;
}

ButtonWindow::ButtonWindow(CWnd& window, CWnd& parent, const ControlSpec& spec)
    : SystemWindow(window, spec.rect), kind(spec.kind) {
    Adopt(MakeChild(parent, {.className = L"Button", .style = ButtonStyle(spec), .rect = spec.rect}, spec.id,
                    spec.text));
}

CheckState ButtonWindow::Check() const {
    return SendMessageW(Own(), BM_GETCHECK, 0, 0) == BST_CHECKED ? CheckState::kChecked : CheckState::kClear;
}

void ButtonWindow::SetCheck(CheckState state) {
    SendMessageW(Own(), BM_SETCHECK, state == CheckState::kChecked ? BST_CHECKED : BST_UNCHECKED, 0);
}

void ButtonWindow::Click() {
    if (::IsWindowEnabled(Own()) == 0) return;
    if (kind == ControlKind::kCheckBox)
        SetCheck(Check() == CheckState::kChecked ? CheckState::kClear : CheckState::kChecked);
    OnClicked();
}

void ButtonWindow::OnClicked() {
    if (kind == ControlKind::kRadioButton) {
        if (group)
            for (ButtonWindow* other : *group)
                if (other != this) other->SetCheck(CheckState::kClear);
        SetCheck(CheckState::kChecked);
    }
    ReportNotification(Notify::kClicked);
}

void ButtonWindow::StyleChanged(DWORD /*before*/) {
    FocusMoved(Own());
}

Size ButtonWindow::PreferredSize() const {
    SIZE ideal{};
    SendMessageW(Own(), BCM_GETIDEALSIZE, 0, reinterpret_cast<LPARAM>(&ideal));
    return {ToLogical(ideal.cx, Dpi()), ToLogical(ideal.cy, Dpi())};
}

void ButtonWindow::SetToolTip(const std::string& text) {
    SystemWindow::SetToolTip(text);
    if (label != nullptr) ShowTipFor(label, text);
}

// ---- Groups ----

bool ButtonWindow::IsEntryOfGroup() const {
    if (!group) return true;
    const auto isChecked = [](const ButtonWindow* each) {
        return each->Check() == CheckState::kChecked && IsUsable(*each);
    };
    auto entry = std::ranges::find_if(*group, isChecked);
    if (entry == group->end())
        entry = std::ranges::find_if(*group, [](const ButtonWindow* each) { return IsUsable(*each); });
    return entry != group->end() && *entry == this;
}

KeyUse ButtonWindow::OnDialogKey(UINT virtualKey) {
    if (!group) return KeyUse::kDialog;
    switch (virtualKey) {
        case VK_UP:
        case VK_LEFT:
            GoInGroup(-1);
            return KeyUse::kTaken;
        case VK_DOWN:
        case VK_RIGHT:
            GoInGroup(1);
            return KeyUse::kTaken;
        default:
            return KeyUse::kDialog;
    }
}

void ButtonWindow::GoInGroup(int direction) {
    const auto count = static_cast<int>(group->size());
    auto index = static_cast<int>(std::ranges::find(*group, this) - group->begin());
    for (int tried = 1; tried < count; ++tried) {
        index = (index + direction + count) % count;
        ButtonWindow& next = *(*group)[static_cast<std::size_t>(index)];
        if (!IsUsable(next)) continue;
        next.SetFocus();
        next.Click();
        return;
    }
}

// ---- Pictures ----

void ButtonWindow::SetPictures(const CIcon& normal, const CIcon& pressed, const CIcon& focused,
                               const CIcon& disabled) {
    pictures = {normal, pressed, focused, disabled};
    Invalidate();
}

void ButtonWindow::DrawPicture(const DRAWITEMSTRUCT& drawing) const {
    const bool hasFocus = (drawing.itemState & ODS_FOCUS) != 0;
    const CIcon* shown = &pictures.normal;
    if (hasFocus && pictures.focused) shown = &pictures.focused;
    if ((drawing.itemState & ODS_SELECTED) != 0 && pictures.pressed) shown = &pictures.pressed;
    if ((drawing.itemState & ODS_DISABLED) != 0 && pictures.disabled) shown = &pictures.disabled;
    FillRect(drawing.hDC, &drawing.rcItem, GetSysColorBrush(COLOR_BTNFACE));
    DrawImage(drawing.hDC, *shown, drawing.rcItem);
    if (hasFocus) DrawFocusRect(drawing.hDC, &drawing.rcItem);
}

// ---- Messages ----

LRESULT ButtonWindow::OnMessage(const Message& message) {
    if (message.code != WM_SETFOCUS) return SystemWindow::OnMessage(message);
    // A radio button reports a click when it gets the keyboard, which nobody has made.
    HWND self = Own();
    isGettingFocus = true;
    const LRESULT answer = SystemWindow::OnMessage(message);
    if (Of(self) == this) isGettingFocus = false;
    return answer;
}

std::optional<LRESULT> ButtonWindow::OnReflected(const Message& message) {
    if (message.code == WM_COMMAND && HIWORD(message.wide) == BN_CLICKED) {
        if (!isGettingFocus) OnClicked();
        return 0;
    }
    if (message.code == WM_DRAWITEM) {
        DrawPicture(*reinterpret_cast<const DRAWITEMSTRUCT*>(message.wider));
        return TRUE;
    }
    return std::nullopt;
}

}  // namespace win32

void GroupRadioButtons(std::span<CWnd* const> buttons) {
    const auto group = std::make_shared<win32::ButtonWindow::Group>();
    for (const CWnd* button : buttons)
        if (auto* native =
                dynamic_cast<win32::ButtonWindow*>(win32::MessageTarget::Of(button->GetSafeHwnd())))
            group->push_back(native);
    for (win32::ButtonWindow* native : *group)
        native->Join(group);
}

}  // namespace permora
