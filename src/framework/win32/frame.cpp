#include "framework/win32/frame.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "framework/keyboard.h"
#include "framework/program_icon.h"
#include "framework/stoppable_work.h"
#include "framework/styles.h"
#include "framework/win32/application.h"
#include "framework/win32/pane.h"

namespace permora {
namespace win32 {
namespace {

// How far the system's coordinates of a placement are from those of the screen: it counts them from the
// display's corner that the task bar leaves.
POINT PlacementOffset(HWND window) {
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &monitor);
    return {monitor.rcWork.left - monitor.rcMonitor.left, monitor.rcWork.top - monitor.rcMonitor.top};
}

bool IsHeld(int virtualKey) {
    return GetKeyState(virtualKey) < 0;
}

bool Matches(const AcceleratorTemplate& accelerator, WPARAM key) {
    const auto isSet = [&](unsigned int flag) { return (accelerator.flags & flag) != 0; };
    return accelerator.key == key && isSet(AcceleratorTemplate::kControl) == IsHeld(VK_CONTROL) &&
           isSet(AcceleratorTemplate::kShift) == IsHeld(VK_SHIFT) &&
           isSet(AcceleratorTemplate::kAlt) == IsHeld(VK_MENU);
}

// Whether the key was down before: it is held.
bool IsRepeated(const MSG& message) {
    constexpr LPARAM kWasDown = LPARAM{1} << 30;
    return (message.lParam & kWasDown) != 0;
}

}  // namespace

FrameWindow::FrameWindow(CWnd& window, FrameEvents& listener)
    : SystemWindow(window, {}), TopWindow(static_cast<MessageTarget&>(*this)), events(listener) {
    Adopt(CreateWindowExW(WS_EX_CONTROLPARENT, OwnClass(), L"", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN,
                          CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, nullptr, nullptr,
                          GetModuleHandleW(nullptr), nullptr));
    Dress(Win32Application::Current()->programIcon);
    Win32Application::Current()->frames.push_back(this);
}

FrameWindow::~FrameWindow() {
    if (Win32Application* toolkit = Win32Application::Current()) std::erase(toolkit->frames, this);
    if (Own() != nullptr) ::SetMenu(Own(), nullptr);  // which has an owner of its own
}

FrameWindow* FrameWindow::Around(HWND window) {
    return dynamic_cast<FrameWindow*>(MessageTarget::Of(GetAncestor(window, GA_ROOT)));
}

void FrameWindow::OnIdle() {
    if (IsWindowVisible(Own()) != 0) events.OnIdle();
}

// ---- Place ----

void FrameWindow::SetVisible(bool visible) {
    ::ShowWindow(Own(), visible ? SW_SHOW : SW_HIDE);
}

void FrameWindow::Move(const Rect& rect) {
    const RECT device = ToDevice(rect, Dpi());
    SetWindowPos(Own(), nullptr, device.left, device.top, device.right - device.left,
                 device.bottom - device.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

WindowPlacement FrameWindow::Placement() const {
    WINDOWPLACEMENT kept{};
    kept.length = sizeof kept;
    GetWindowPlacement(Own(), &kept);
    const POINT offset = PlacementOffset(Own());
    OffsetRect(&kept.rcNormalPosition, offset.x, offset.y);
    const bool isMaximised = kept.showCmd == SW_SHOWMAXIMIZED ||
                             (kept.showCmd == SW_SHOWMINIMIZED && (kept.flags & WPF_RESTORETOMAXIMIZED) != 0);
    return {ToLogical(kept.rcNormalPosition, GetDpiForSystem()),
            isMaximised ? ShowState::kMaximised : ShowState::kNormal};
}

void FrameWindow::Place(const WindowPlacement& placement) {
    WINDOWPLACEMENT wanted{};
    wanted.length = sizeof wanted;
    wanted.showCmd = placement.showState == ShowState::kMaximised ? SW_SHOWMAXIMIZED : SW_SHOWNORMAL;
    wanted.rcNormalPosition = ToDevice(placement.normalRect, GetDpiForSystem());
    const POINT offset = PlacementOffset(Own());
    OffsetRect(&wanted.rcNormalPosition, -offset.x, -offset.y);
    SetWindowPlacement(Own(), &wanted);
}

void FrameWindow::Activate() {
    if (IsIconic(Own()) != 0) ::ShowWindow(Own(), SW_RESTORE);
    SetForegroundWindow(Own());
}

// ---- Menu and keys ----

void FrameWindow::SetMenu(const CMenu& shown) {
    menu = std::make_unique<SystemMenu>(
        shown.Shared(), MenuForm::kBar, Dpi(),
        MenuHandlers{.opening = [this](CMenu::Items& items) { events.OnMenuOpening(items); },
                     .highlighted = [this](unsigned int id) { events.OnHighlight(id); }});
    ::SetMenu(Own(), menu->Handle());
}

void FrameWindow::SetAccelerators(std::span<const AcceleratorTemplate> given) {
    accelerators.assign(given.begin(), given.end());
}

bool FrameWindow::UseMessage(const MSG& message) {
    const bool isPress = message.message == WM_KEYDOWN || message.message == WM_SYSKEYDOWN;
    if (!isPress || ::IsWindowEnabled(Own()) == 0 || IsModalWindowOpen()) return false;
    return UseWatchedKey(message) || UseAccelerator(message) || UseKey(message);
}

// In a pane with keys of its own (WatchKeys).
bool FrameWindow::UseWatchedKey(const MSG& message) {
    const bool isEscape = message.wParam == VK_ESCAPE;
    if ((!isEscape && message.wParam != VK_RETURN) || IsRepeated(message)) return false;
    for (HWND each = message.hwnd; each != nullptr && each != Own(); each = GetParent(each)) {
        const auto* pane = dynamic_cast<const PaneWindow*>(MessageTarget::Of(each));
        if (pane == nullptr || !pane->onEnter) continue;
        if (!isEscape)
            pane->onEnter();
        else if (!IsLate(message))
            pane->onEscape();
        return true;
    }
    return false;
}

bool FrameWindow::UseAccelerator(const MSG& message) {
    const auto found = std::ranges::find_if(
        accelerators, [&](const AcceleratorTemplate& each) { return Matches(each, message.wParam); });
    if (found == accelerators.end()) return false;
    const MessageTarget* focused = MessageTarget::Of(message.hwnd);
    if (focused != nullptr && focused->KeepsKey(static_cast<UINT>(message.wParam))) return false;
    if (IsRepeated(message)) return true;  // a key held too long must not delete twice
    if (message.wParam != VK_ESCAPE)
        PostChosen(found->command);
    else if (!IsLate(message))
        Post(Request::kEscape, found->command);
    return true;
}

bool FrameWindow::UseKey(const MSG& message) {
    MessageTarget* focused = MessageTarget::Of(message.hwnd);
    if (focused != nullptr) {
        const KeyUse use = focused->OnDialogKey(static_cast<UINT>(message.wParam));
        if (use != KeyUse::kDialog) return use == KeyUse::kTaken;
    }
    if (message.wParam != VK_TAB || IsControlKeyDown() || IsHeld(VK_MENU)) return false;
    MoveFocus(IsHeld(VK_SHIFT) ? -1 : 1);
    return true;
}

// An Escape that comes right after a modal window has gone was pressed for that one: typed twice, or while
// the program worked.
bool FrameWindow::IsLate(const MSG& message) const {
    constexpr LONG kMoment = 750;  // milliseconds
    return givenBack && static_cast<LONG>(message.time - *givenBack) < kMoment;
}

void FrameWindow::MoveFocus(int direction, HWND leaving) {
    HWND first = nullptr;
    HWND next = ::GetFocus();
    if (IsChild(Own(), next) == 0) next = nullptr;
    while (true) {
        next = GetNextDlgTabItem(Own(), next, direction < 0 ? TRUE : FALSE);
        if (next == nullptr || next == first || IsWindowVisible(next) == 0) return;
        if (first == nullptr) first = next;
        if (next != leaving && IsChild(leaving, next) == 0) break;
    }
    GiveFocus(next);
    if ((SendMessageW(next, WM_GETDLGCODE, 0, 0) & DLGC_HASSETSEL) != 0) SendMessageW(next, EM_SETSEL, 0, -1);
}

// ---- Messages ----

void FrameWindow::Serve(Request request, unsigned int id) {
    switch (request) {
        case Request::kChosen:
            events.OnChosen(id);
            break;
        case Request::kEscape:
            events.OnEscape(id);
            break;
        case Request::kClose:
            events.OnCloseRequest();
            break;
        case Request::kLayout: {
            const Rect client = ClientRect();
            ReportSize({client.Width(), client.Height()});
            break;
        }
    }
}

// The system ends the process once this has been answered.
void FrameWindow::OnSessionEnd() {
    CWinApp* application = GetApp();
    if (application == nullptr || application->mainWindow != &Window()) return;
    application->OnEndSession();
    StopAllWork(std::chrono::milliseconds(0));
}

LRESULT FrameWindow::OnMessage(const Message& message) {
    if ((menu != nullptr && menu->Receive(message)) || FollowDesktop(message)) return 0;
    switch (message.code) {
        case kRequested:
            Serve(static_cast<Request>(message.wide), static_cast<unsigned int>(message.wider));
            return 0;
        case WM_COMMAND:
            if (message.wider == 0 && HIWORD(message.wide) == 0) {
                PostChosen(LOWORD(message.wide));
                return 0;
            }
            break;
        case WM_CLOSE:
            PostClose();
            return 0;
        case WM_ENDSESSION:
            if (message.wide != FALSE) OnSessionEnd();
            return 0;
        case WM_ACTIVATE: {
            const bool isActive = LOWORD(message.wide) != WA_INACTIVE;
            // A window that has been minimised becomes active when it is restored.
            if (TakeActivation(isActive) && HIWORD(message.wide) == 0) ::SetFocus(Own());
            return 0;
        }
        case WM_ENABLE:
            if (message.wide != FALSE) givenBack = GetTickCount();
            break;
        default:
            break;
    }
    return SystemWindow::OnMessage(message);
}

}  // namespace win32

std::unique_ptr<NativeFrame> MakeNativeFrame(CWnd& window, unsigned int /*id*/, FrameEvents& events) {
    return std::make_unique<win32::FrameWindow>(window, events);
}

void WatchKeys(CWnd& pane, std::function<void()> onEnter, std::function<void()> onEscape) {
    auto& native = dynamic_cast<win32::PaneWindow&>(*win32::MessageTarget::Of(pane.GetSafeHwnd()));
    native.onEnter = std::move(onEnter);
    native.onEscape = std::move(onEscape);
}

void SetProgramIcon(const CIcon& icon) {
    Win32Application::Current()->programIcon = icon;
}

std::vector<Rect> ScreenAreas() {
    std::vector<Rect> areas;
    const auto take = [](HMONITOR display, HDC, RECT*, LPARAM list) -> BOOL {
        MONITORINFO monitor{};
        monitor.cbSize = sizeof monitor;
        if (GetMonitorInfoW(display, &monitor) != 0)
            reinterpret_cast<std::vector<Rect>*>(list)->push_back(
                win32::ToLogical(monitor.rcWork, GetDpiForSystem()));
        return TRUE;
    };
    EnumDisplayMonitors(nullptr, nullptr, take, reinterpret_cast<LPARAM>(&areas));
    return areas;
}

}  // namespace permora
