// WindowDriver on the Win32 back end.
#include "tests/support/window_driver_win32.h"

#include <algorithm>
#include <map>

#include "framework/styles.h"
#include "framework/win32/buttons.h"
#include "framework/win32/dialog_window.h"
#include "framework/win32/text.h"
#include "tests/support/ui_backend.h"

namespace permora::test {
namespace {

using win32::ClassOf;
using win32::TextOf;
using win32::Utf8;
using win32::Wide;

// False, and a failure of the test, when the window has gone.
bool IsLive(HWND window) {
    if (test::IsOpen(window)) return true;
    ADD_FAILURE() << "the window is not open";
    return false;
}

HWND FindControl(HWND window, unsigned int id) {
    HWND found = nullptr;
    for (HWND each : Descendants(window)) {
        if (static_cast<unsigned int>(GetDlgCtrlID(each)) != id) continue;
        if (IsWindowVisible(each) != 0) return each;
        if (found == nullptr) found = each;
    }
    return found;
}

// The text of a control as the user reads it.
std::string ShownText(HWND control) {
    const std::wstring name = ClassOf(control);
    if (const auto* native = dynamic_cast<const NativeWindow*>(win32::MessageTarget::Of(control));
        native != nullptr && name == L"ComboBox")
        return native->Text();
    return Utf8(TextOf(control));
}

// A key's virtual code by the driver's name of it; 0: none.
WPARAM KeyCode(const std::string& name) {
    static const std::map<std::string, WPARAM> kNames = {
        {"Return", VK_RETURN}, {"Enter", VK_RETURN},   {"Esc", VK_ESCAPE}, {"Tab", VK_TAB},
        {"Space", VK_SPACE},   {"Backspace", VK_BACK}, {"Del", VK_DELETE}, {"Ins", VK_INSERT},
        {"Home", VK_HOME},     {"End", VK_END},        {"PgUp", VK_PRIOR}, {"PgDown", VK_NEXT},
        {"Up", VK_UP},         {"Down", VK_DOWN},      {"Left", VK_LEFT},  {"Right", VK_RIGHT},
        {"F10", VK_F10},       {"*", VK_MULTIPLY}};
    if (const auto found = kNames.find(name); found != kNames.end()) return found->second;
    if (name.size() == 1) return static_cast<WPARAM>(VkKeyScanW(static_cast<wchar_t>(name[0])) & 0xFF);
    return 0;
}

// Holds keys down, in the state that the thread's messages are read with.
class HeldKeys {
  public:
    explicit HeldKeys(const std::vector<int>& held) {
        GetKeyboardState(before);
        BYTE state[256] = {};
        for (const int key : held)
            state[key] = 0x80;
        SetKeyboardState(state);
    }
    ~HeldKeys() { SetKeyboardState(before); }
    HeldKeys(const HeldKeys&) = delete;
    HeldKeys& operator=(const HeldKeys&) = delete;

  private:
    BYTE before[256] = {};
};

// What a window shows, pixel by pixel.
std::vector<std::uint32_t> PixelsOf(HWND window) {
    RECT client{};
    GetClientRect(window, &client);
    BITMAPINFO info{};
    info.bmiHeader = {sizeof info.bmiHeader, client.right, -client.bottom, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(client.right) *
                                      static_cast<std::size_t>(client.bottom));
    HDC shown = GetDC(window);
    HDC memory = CreateCompatibleDC(shown);
    HBITMAP copy = CreateCompatibleBitmap(shown, client.right, client.bottom);
    HGDIOBJ own = SelectObject(memory, copy);
    BitBlt(memory, 0, 0, client.right, client.bottom, shown, 0, 0, SRCCOPY);
    SelectObject(memory, own);
    GetDIBits(memory, copy, 0, static_cast<UINT>(client.bottom), pixels.data(), &info, DIB_RGB_COLORS);
    DeleteObject(copy);
    DeleteDC(memory);
    ReleaseDC(window, shown);
    return pixels;
}

POINT MiddleOf(HWND window) {
    RECT client{};
    GetClientRect(window, &client);
    return {client.right / 2, client.bottom / 2};
}

bool IsBoxOrRadio(HWND control) {
    const LONG type = GetWindowLongW(control, GWL_STYLE) & BS_TYPEMASK;
    return ClassOf(control) == L"Button" && (type == BS_AUTOCHECKBOX || type == BS_RADIOBUTTON);
}

}  // namespace

std::vector<HWND> Descendants(HWND window) {
    std::vector<HWND> all;
    const auto take = [](HWND child, LPARAM list) -> BOOL {
        reinterpret_cast<std::vector<HWND>*>(list)->push_back(child);
        return TRUE;
    };
    EnumChildWindows(window, take, reinterpret_cast<LPARAM>(&all));
    return all;
}

bool TakesInput(HWND window) {
    if (!IsLive(window)) return false;
    if (IsWindowEnabled(window) != 0) return true;
    ADD_FAILURE() << "\"" << Utf8(TextOf(window)) << "\" takes no input";
    return false;
}

HWND ControlOf(HWND window, unsigned int id) {
    HWND control = IsLive(window) ? FindControl(window, id) : nullptr;
    EXPECT_NE(control, nullptr) << "no such control: " << id << " in " << WindowDriver(window).Describe();
    return control;
}

HWND WindowUnderMouse(HWND top, POINT screen) {
    HWND deepest = top;
    while (true) {
        POINT client = screen;
        ScreenToClient(deepest, &client);
        HWND child = ChildWindowFromPointEx(deepest, client, CWP_SKIPINVISIBLE | CWP_SKIPTRANSPARENT);
        if (child == nullptr || child == deepest) return deepest;
        deepest = child;
    }
}

void ClickWindow(HWND target, POINT client, MouseButton button, WPARAM keys, Clicks clicks) {
    HWND top = GetAncestor(target, GA_ROOT);
    if (!TakesInput(top)) return;
    POINT screen = client;
    ClientToScreen(target, &screen);
    if (HWND hit = WindowUnderMouse(top, screen); hit != target) {
        ADD_FAILURE() << "the mouse does not reach control " << GetDlgCtrlID(target) << ", but "
                      << GetDlgCtrlID(hit);
        return;
    }
    if (GetActiveWindow() != top) SetActiveWindow(top);
    const bool isLeft = button == MouseButton::kLeft;
    const LPARAM place = MAKELPARAM(client.x, client.y);
    const WPARAM held = keys | (isLeft ? MK_LBUTTON : MK_RBUTTON);
    const auto click = [&](UINT down) {
        PostMessageW(target, down, held, place);
        PostMessageW(target, isLeft ? WM_LBUTTONUP : WM_RBUTTONUP, keys, place);
        ServeWaiting();
    };
    std::vector<int> heldKeys;
    if ((keys & MK_CONTROL) != 0) heldKeys.push_back(VK_CONTROL);
    if ((keys & MK_SHIFT) != 0) heldKeys.push_back(VK_SHIFT);
    const HeldKeys holding(heldKeys);
    click(isLeft ? WM_LBUTTONDOWN : WM_RBUTTONDOWN);
    if (clicks == Clicks::kTwo) click(isLeft ? WM_LBUTTONDBLCLK : WM_RBUTTONDBLCLK);
}

// ---- The window ----

bool WindowDriver::IsOpen() const {
    return test::IsOpen(window);
}

std::string WindowDriver::Title() const {
    return IsLive(window) ? Utf8(TextOf(window)) : std::string();
}

std::string WindowDriver::Describe() const {
    if (IsWindow(window) == 0) return "(gone)";
    std::string all = "\"" + Utf8(TextOf(window)) + "\":";
    for (HWND child : Descendants(window))
        if (const std::string text = ShownText(child); IsWindowVisible(child) != 0 && !text.empty())
            all += " [" + text + "]";
    return all;
}

void WindowDriver::ClickCloseBox() {
    if (!TakesInput(window)) return;
    EXPECT_NE(GetWindowLongW(window, GWL_STYLE) & WS_SYSMENU, 0) << "the window has no close box";
    PostMessageW(window, WM_SYSCOMMAND, SC_CLOSE, 0);
    ServeWaiting();
}

bool WindowDriver::WaitUntil(const std::function<bool()>& condition) const {
    const bool holds = ServeEventsUntil(condition);
    EXPECT_TRUE(holds) << "waited in vain in " << Describe();
    return holds;
}

// ---- Keyboard ----

void WindowDriver::Press(const std::string& key) {
    if (!TakesInput(window)) return;
    std::string name = key;
    std::vector<int> held;
    const auto takeModifier = [&](const char* prefix, int code) {
        if (!name.starts_with(prefix)) return;
        name = name.substr(std::string(prefix).size());
        held.push_back(code);
    };
    takeModifier("Ctrl+", VK_CONTROL);
    takeModifier("Alt+", VK_MENU);
    takeModifier("Shift+", VK_SHIFT);
    const WPARAM code = KeyCode(name);
    ASSERT_NE(code, 0U) << "no such key: " << key;
    // After another window has closed, the keyboard comes back, as the system sees to.
    if (GetActiveWindow() != window) SetActiveWindow(window);
    HWND focused = GetFocus();
    HWND target = IsChild(window, focused) != 0 ? focused : window;
    const bool isAlt = std::ranges::find(held, VK_MENU) != held.end();
    const LPARAM scan = static_cast<LPARAM>(MapVirtualKeyW(static_cast<UINT>(code), MAPVK_VK_TO_VSC)) << 16;
    const LPARAM details = 1 | scan | (isAlt ? LPARAM{1} << 29 : 0);
    const HeldKeys holding(held);
    const bool isSystemKey = isAlt || code == VK_F10;
    PostMessageW(target, isSystemKey ? WM_SYSKEYDOWN : WM_KEYDOWN, code, details);
    ServeWaiting();
    constexpr LPARAM kReleased = LPARAM{3} << 30;
    if (IsWindow(target) != 0)
        PostMessageW(target, isSystemKey ? WM_SYSKEYUP : WM_KEYUP, code, details | kReleased);
    ServeWaiting();
}

unsigned int WindowDriver::FocusedControl() const {
    HWND focused = GetFocus();
    if (!IsLive(window) || IsChild(window, focused) == 0) return 0;
    return static_cast<unsigned int>(GetDlgCtrlID(focused));
}

bool WindowDriver::HasFocus(unsigned int id) const {
    HWND control = ControlOf(window, id);
    return control != nullptr && control == GetFocus();
}

unsigned int WindowDriver::DefaultButton() const {
    unsigned int found = 0;
    if (!IsLive(window)) return found;
    for (HWND each : Descendants(window)) {
        const bool isDefault =
            win32::IsPushButton(each) && (SendMessageW(each, WM_GETDLGCODE, 0, 0) & DLGC_DEFPUSHBUTTON) != 0;
        if (!isDefault || IsWindowVisible(each) == 0 || IsWindowEnabled(each) == 0) continue;
        EXPECT_EQ(found, 0U) << "two default buttons: " << GetDlgCtrlID(each);
        found = static_cast<unsigned int>(GetDlgCtrlID(each));
    }
    return found;
}

bool WindowDriver::ShowsFocus(unsigned int id) const {
    HWND control = ControlOf(window, id);
    if (control == nullptr || GetFocus() != control) return false;
    // An edit field shows it by its caret, which blinks.
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    if (GetGUIThreadInfo(GetCurrentThreadId(), &info) != 0 && info.hwndCaret == control) return true;
    UpdateWindow(control);
    const auto with = PixelsOf(control);
    ::SetFocus(window);
    UpdateWindow(control);
    const auto without = PixelsOf(control);
    ::SetFocus(control);
    return with != without;
}

std::vector<unsigned int> WindowDriver::TabThrough() {
    std::vector<unsigned int> order;
    for (unsigned int focused = FocusedControl(); std::ranges::find(order, focused) == order.end();
         focused = FocusedControl()) {
        order.push_back(focused);
        Press("Tab");
    }
    return order;
}

// ---- All controls ----

bool WindowDriver::Has(unsigned int id) const {
    return IsLive(window) && (FindControl(window, id) != nullptr || FindToolButton(window, id));
}

std::string WindowDriver::Text(unsigned int id) const {
    HWND control = ControlOf(window, id);
    return control != nullptr ? ShownText(control) : std::string();
}

bool WindowDriver::IsEnabled(unsigned int id) const {
    if (const auto button = FindToolButton(window, id))
        return SendMessageW(button->bar, TB_ISBUTTONENABLED, id, 0) != 0;
    HWND control = ControlOf(window, id);
    return control != nullptr && IsWindowEnabled(control) != 0;
}

bool WindowDriver::IsVisible(unsigned int id) const {
    HWND control = ControlOf(window, id);
    return control != nullptr && IsWindowVisible(control) != 0;
}

void WindowDriver::Click(unsigned int id) {
    if (const auto button = IsLive(window) ? FindToolButton(window, id) : std::nullopt) {
        EXPECT_NE(SendMessageW(button->bar, TB_ISBUTTONENABLED, id, 0), 0) << "button " << id;
        const RECT& rect = button->rect;
        ClickWindow(button->bar, {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2});
        return;
    }
    HWND control = ControlOf(window, id);
    if (control == nullptr) return;
    if (IsWindowVisible(control) == 0 || IsWindowEnabled(control) == 0) {
        ADD_FAILURE() << "control " << id << " cannot be clicked: it is disabled or hidden";
        return;
    }
    // A box or radio button may be wider than its text, and answers only on mark and text.
    constexpr LONG kOnTheMark = 8;
    POINT place = MiddleOf(control);
    if (IsBoxOrRadio(control)) place.x = std::min(place.x, kOnTheMark);
    ClickWindow(control, place);
}

// ---- Boxes, edit fields, combo boxes ----

bool WindowDriver::IsChecked(unsigned int id) const {
    if (const auto button = FindToolButton(window, id))
        return SendMessageW(button->bar, TB_ISBUTTONCHECKED, id, 0) != 0;
    HWND control = ControlOf(window, id);
    return control != nullptr && SendMessageW(control, BM_GETCHECK, 0, 0) == BST_CHECKED;
}

void WindowDriver::Type(unsigned int id, const std::string& text) {
    Click(id);
    Press("End");
    HWND control = ControlOf(window, id);
    for (const wchar_t letter : Wide(text))
        PostMessageW(control, WM_CHAR, letter, 1);
    ServeWaiting();
}

void WindowDriver::SetText(unsigned int id, const std::string& text) {
    Click(id);
    Press("Ctrl+A");
    Press("Del");
    Type(id, text);
}

std::vector<std::string> WindowDriver::ComboItems(unsigned int id) const {
    std::vector<std::string> items;
    HWND combo = ControlOf(window, id);
    const auto count = combo != nullptr ? SendMessageW(combo, CB_GETCOUNT, 0, 0) : 0;
    for (WPARAM item = 0; item < static_cast<WPARAM>(count); ++item) {
        const auto length = static_cast<std::size_t>(SendMessageW(combo, CB_GETLBTEXTLEN, item, 0));
        std::wstring text(length + 1, L'\0');
        SendMessageW(combo, CB_GETLBTEXT, item, reinterpret_cast<LPARAM>(text.data()));
        text.resize(length);
        items.push_back(Utf8(text));
    }
    return items;
}

void WindowDriver::SelectItem(unsigned int id, const std::string& text) {
    HWND combo = ControlOf(window, id);
    const std::vector<std::string> items = ComboItems(id);
    const auto item = std::ranges::find(items, text);
    if (combo == nullptr || item == items.end() || IsWindowEnabled(combo) == 0) {
        ADD_FAILURE() << "item cannot be chosen: " << text;
        return;
    }
    ::SetFocus(combo);
    Press("Alt+Down");
    COMBOBOXINFO info{};
    info.cbSize = sizeof info;
    GetComboBoxInfo(combo, &info);
    ASSERT_NE(IsWindowVisible(info.hwndList), 0) << "the list has not dropped down";
    RECT place{};
    const auto index = static_cast<WPARAM>(item - items.begin());
    SendMessageW(info.hwndList, LB_GETITEMRECT, index, reinterpret_cast<LPARAM>(&place));
    const LPARAM middle = MAKELPARAM((place.left + place.right) / 2, (place.top + place.bottom) / 2);
    PostMessageW(info.hwndList, WM_LBUTTONDOWN, MK_LBUTTON, middle);
    PostMessageW(info.hwndList, WM_LBUTTONUP, 0, middle);
    ServeWaiting();
}

}  // namespace permora::test
