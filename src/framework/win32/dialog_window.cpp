#include "framework/win32/dialog_window.h"

#include <algorithm>

#include "framework/styles.h"
#include "framework/win32/application.h"
#include "framework/win32/buttons.h"
#include "framework/win32/dialog_keys.h"
#include "framework/win32/others_disabled.h"

namespace permora {
namespace win32 {
namespace {

RECT RectOf(HWND window) {
    RECT rect{};
    ::GetWindowRect(window, &rect);
    return rect;
}

// Where windows may stand on the display that shows most of `window`.
RECT WorkArea(HWND window) {
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &monitor);
    return monitor.rcWork;
}

// The size that `window` can have of the one that is wanted.
SIZE WithinScreen(SIZE wanted, HWND window) {
    const RECT room = WorkArea(window);
    return {std::min(wanted.cx, room.right - room.left), std::min(wanted.cy, room.bottom - room.top)};
}

// With its whole size within `area`, if that is large enough.
void PlaceWithin(HWND window, POINT corner, const RECT& area) {
    const RECT rect = RectOf(window);
    const LONG right = std::max(area.left, area.right - (rect.right - rect.left));
    const LONG bottom = std::max(area.top, area.bottom - (rect.bottom - rect.top));
    SetWindowPos(window, nullptr, std::clamp(corner.x, area.left, right),
                 std::clamp(corner.y, area.top, bottom), 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

bool TakesFocus(HWND control) {
    if (IsWindowVisible(control) == 0 || ::IsWindowEnabled(control) == 0) return false;
    const auto* radio = dynamic_cast<const ButtonWindow*>(MessageTarget::Of(control));
    return radio == nullptr || radio->IsEntryOfGroup();
}

}  // namespace

DialogWindow::DialogWindow(CWnd& window, CWnd* owner, DWORD templateStyle, unsigned int templateNumber,
                           DialogKeys& handler)
    : PaintedWindow(window, {}),
      TopWindow(static_cast<MessageTarget&>(*this)),
      keys(handler),
      templateId(templateNumber) {
    HWND ownerTop = owner != nullptr ? GetAncestor(owner->GetSafeHwnd(), GA_ROOT) : nullptr;
    const DWORD shown = WS_POPUP | WS_CAPTION | WS_CLIPCHILDREN | (templateStyle & WS_SYSMENU);
    Adopt(CreateWindowExW(WS_EX_CONTROLPARENT | WS_EX_DLGMODALFRAME, OwnClass(), L"", shown, 0, 0, 0, 0,
                          ownerTop, nullptr, GetModuleHandleW(nullptr), nullptr));
    Dress(ownerTop == nullptr ? Win32Application::Current()->programIcon : CIcon());
}

DialogWindow::~DialogWindow() {
    if (Win32Application* toolkit = Win32Application::Current()) std::erase(toolkit->besideWindows, beside);
}

DialogWindow* DialogWindow::Around(HWND window) {
    return dynamic_cast<DialogWindow*>(MessageTarget::Of(GetAncestor(window, GA_ROOT)));
}

// ---- Size and place ----

SIZE DialogWindow::WindowSize(Size client) const {
    RECT rect = ToDevice(Rect{0, 0, client.cx, client.cy}, Dpi());
    AdjustWindowRectExForDpi(&rect, static_cast<DWORD>(GetWindowLongW(Own(), GWL_STYLE)), FALSE,
                             static_cast<DWORD>(GetWindowLongW(Own(), GWL_EXSTYLE)), Dpi());
    return {rect.right - rect.left, rect.bottom - rect.top};
}

void DialogWindow::Resize(SIZE size) {
    SetWindowPos(Own(), nullptr, 0, 0, size.cx, size.cy, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void DialogWindow::SetClientSize(Size size, Sizing sizing) {
    if (sizing == Sizing::kMayGrow) {
        SetWindowLongW(Own(), GWL_STYLE, GetWindowLongW(Own(), GWL_STYLE) | WS_THICKFRAME);
        least = size;
    }
    const RECT before = RectOf(Own());
    SIZE whole = WindowSize(size);
    if (sizing == Sizing::kMayGrow) {
        whole.cx = std::max(whole.cx, before.right - before.left);
        whole.cy = std::max(whole.cy, before.bottom - before.top);
        whole = WithinScreen(whole, Own());
    }
    Resize(whole);
}

void DialogWindow::Enlarge(Size client) {
    const SIZE whole = WindowSize({std::max(client.cx, least.cx), std::max(client.cy, least.cy)});
    Resize(WithinScreen(whole, Own()));
}

void DialogWindow::Move(const Rect& rect) {
    const RECT device = ToDevice(rect, Dpi());
    SetWindowPos(Own(), nullptr, device.left, device.top, device.right - device.left,
                 device.bottom - device.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

void DialogWindow::Centre() {
    HWND owner = GetWindow(Own(), GW_OWNER);
    const bool isOverOwner = owner != nullptr && IsWindowVisible(owner) != 0;
    const RECT area = WorkArea(isOverOwner ? owner : Own());
    const RECT around = isOverOwner ? RectOf(owner) : area;
    const RECT bounds = RectOf(Own());
    PlaceWithin(Own(),
                {(around.left + around.right - (bounds.right - bounds.left)) / 2,
                 (around.top + around.bottom - (bounds.bottom - bounds.top)) / 2},
                area);
}

// Where it covers as little of `shown` as the screen allows.
void DialogWindow::PlaceBeside(HWND shown) {
    const RECT other = RectOf(shown);
    const RECT area = WorkArea(shown);
    const RECT bounds = RectOf(Own());
    const bool isRoomierLeft = other.left - area.left > area.right - other.right;
    PlaceWithin(Own(), {isRoomierLeft ? other.left - (bounds.right - bounds.left) : other.right, other.top},
                area);
}

// ---- Modality ----

void DialogWindow::RunModal() {
    Win32Application& toolkit = *Win32Application::Current();
    HWND self = Own();
    hasEnded = false;
    Centre();
    toolkit.modalWindows.push_back(self);
    {
        const OthersDisabled others(self);
        ::ShowWindow(Own(), SW_SHOW);
        ::SetActiveWindow(Own());
        // The window may go with its owner.
        while (!hasEnded && Own() != nullptr && Win32Application::ServeMessage()) {
        }
    }
    std::erase(toolkit.modalWindows, self);
    if (Own() == nullptr) return;
    HWND below = toolkit.modalWindows.empty() ? GetWindow(Own(), GW_OWNER) : toolkit.modalWindows.back();
    if (below != nullptr) ::SetActiveWindow(below);
    ::ShowWindow(Own(), SW_HIDE);
}

void DialogWindow::EndModal() {
    hasEnded = true;
    PostMessageW(Own(), WM_NULL, 0, 0);  // the loop may be waiting
}

void DialogWindow::ShowBeside() {
    if (beside == nullptr) {
        beside = Own();
        if (HWND active = ::GetActiveWindow(); active != nullptr) PlaceBeside(active);
        // One that belongs to another would always stand before it.
        SetWindowLongPtrW(Own(), GWLP_HWNDPARENT, 0);
        Win32Application::Current()->besideWindows.push_back(beside);
        ::EnableWindow(beside, TRUE);
    }
    ::ShowWindow(Own(), IsIconic(Own()) != 0 ? SW_RESTORE : SW_SHOW);
    SetForegroundWindow(Own());
}

// ---- The keyboard ----

void DialogWindow::SetTabOrder(std::span<CWnd* const> controls) {
    tabOrder.clear();
    for (const CWnd* control : controls)
        tabOrder.push_back(control->GetSafeHwnd());
}

void DialogWindow::MoveFocus(int direction, HWND leaving) {
    const auto count = static_cast<int>(tabOrder.size());
    const auto current = std::ranges::find(tabOrder, ::GetFocus());
    int index = current != tabOrder.end() ? static_cast<int>(current - tabOrder.begin()) : -1;
    if (index < 0 && direction < 0) index = 0;
    for (int tried = 0; tried < count; ++tried) {
        index = (index + direction + count) % count;
        HWND next = tabOrder[static_cast<std::size_t>(index)];
        if (next == ::GetFocus() || next == leaving || IsChild(leaving, next) != 0) continue;
        if (!TakesFocus(next)) continue;
        GiveFocus(next);
        const LRESULT wish = SendMessageW(next, WM_GETDLGCODE, 0, 0);
        if ((wish & DLGC_HASSETSEL) != 0) SendMessageW(next, EM_SETSEL, 0, -1);
        return;
    }
}

void DialogWindow::OnActivate(bool isActive) {
    if (TakeActivation(isActive)) MoveFocus(1);
    if (isActive) OnFocusMoved();
}

void DialogWindow::OnFocusMoved() {
    if (::GetActiveWindow() != Own()) return;
    HWND focused = IsPushButton(::GetFocus()) ? ::GetFocus() : nullptr;
    const auto show = [](HWND window, LPARAM withFocus) -> BOOL {
        const auto* button = dynamic_cast<const ButtonWindow*>(MessageTarget::Of(window));
        if (button == nullptr || !IsPushButton(window)) return TRUE;
        HWND chosen = reinterpret_cast<HWND>(withFocus);
        const bool isDefault = chosen != nullptr ? window == chosen : button->IsTemplatesDefault();
        SendMessageW(window, BM_SETSTYLE, isDefault ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON, TRUE);
        return TRUE;
    };
    EnumChildWindows(Own(), show, reinterpret_cast<LPARAM>(focused));
}

// ---- Messages ----

bool DialogWindow::UseMessage(const MSG& message) {
    if (UseDialogKey(*this, message)) return true;
    MSG copy = message;
    return IsDialogMessageW(Own(), &copy) != 0;
}

LRESULT DialogWindow::OnMessage(const Message& message) {
    if (FollowDesktop(message)) return 0;
    switch (message.code) {
        case WM_CLOSE:
            keys.OnEscapeKeyOrCloseBox();
            return 0;
        case WM_ACTIVATE:
            OnActivate(LOWORD(message.wide) != WA_INACTIVE);
            return 0;
        case WM_GETMINMAXINFO:
            if (least != Size{}) {
                const SIZE whole = WithinScreen(WindowSize(least), Own());
                reinterpret_cast<MINMAXINFO*>(message.wider)->ptMinTrackSize = {whole.cx, whole.cy};
                return 0;
            }
            break;
        default:
            break;
    }
    return PaintedWindow::OnMessage(message);
}

}  // namespace win32

std::unique_ptr<NativeDialog> MakeNativeDialog(CWnd& window, CWnd* owner, DWORD style,
                                               unsigned int templateId, DialogKeys& keys) {
    return std::make_unique<win32::DialogWindow>(window, owner, style, templateId, keys);
}

}  // namespace permora
