#include "framework/win32/message_target.h"

#include <utility>

#include "framework/styles.h"

namespace permora::win32 {
namespace {

constexpr UINT_PTR kTargetId = 1;
constexpr const wchar_t* kTargetProperty = L"PermoraTarget";

// The child window that `message` is about; null when it is about none.
HWND SubjectOf(const Message& message) {
    switch (message.code) {
        case WM_COMMAND:
        case WM_CTLCOLORSTATIC:
        case WM_CTLCOLOREDIT:
        case WM_CTLCOLORBTN:
            return reinterpret_cast<HWND>(message.wider);
        case WM_NOTIFY:
            return reinterpret_cast<const NMHDR*>(message.wider)->hwndFrom;
        case WM_DRAWITEM:
            return reinterpret_cast<const DRAWITEMSTRUCT*>(message.wider)->hwndItem;
        default:
            return nullptr;
    }
}

}  // namespace

MessageTarget::~MessageTarget() {
    DestroyOwn();
}

void MessageTarget::DestroyOwn() {
    if (own == nullptr) return;
    RemoveWindowSubclass(own, Receive, kTargetId);
    RemovePropW(own, kTargetProperty);
    DestroyWindow(std::exchange(own, nullptr));
}

MessageTarget* MessageTarget::Of(HWND window) {
    // Another instance of the program has the property, too.
    if (window == nullptr || GetWindowThreadProcessId(window, nullptr) != GetCurrentThreadId())
        return nullptr;
    return static_cast<MessageTarget*>(GetPropW(window, kTargetProperty));
}

void MessageTarget::Adopt(HWND made) {
    own = made;
    if (made == nullptr) return;
    SetPropW(made, kTargetProperty, this);
    SetWindowSubclass(made, Receive, kTargetId, reinterpret_cast<DWORD_PTR>(this));
}

LRESULT MessageTarget::Default(const Message& message) const {
    return DefSubclassProc(own, message.code, message.wide, message.wider);
}

LRESULT CALLBACK MessageTarget::Receive(HWND window, UINT code, WPARAM wide, LPARAM wider, UINT_PTR /*id*/,
                                        DWORD_PTR self) {
    auto* target = reinterpret_cast<MessageTarget*>(self);
    const Message message{code, wide, wider};
    if (code == WM_NCDESTROY) {
        RemoveWindowSubclass(window, Receive, kTargetId);
        RemovePropW(window, kTargetProperty);
        target->own = nullptr;
        return DefSubclassProc(window, code, wide, wider);
    }
    if (MessageTarget* subject = Of(SubjectOf(message)); subject != nullptr && subject != target)
        if (const auto answer = subject->OnReflected(message)) return *answer;
    return target->OnMessage(message);
}

}  // namespace permora::win32
