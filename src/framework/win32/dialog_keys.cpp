#include "framework/win32/dialog_keys.h"

#include "framework/keyboard.h"
#include "framework/win32/buttons.h"
#include "framework/win32/dialog_window.h"

namespace permora::win32 {
namespace {

bool IsShiftKeyDown() {
    return GetKeyState(VK_SHIFT) < 0;
}

ButtonWindow* FocusedPushButton(HWND focused) {
    return IsPushButton(focused) ? dynamic_cast<ButtonWindow*>(MessageTarget::Of(focused)) : nullptr;
}

// A key of the dialog's own; the dialog manager has mnemonics and what is left of the arrows.
bool UseKey(DialogWindow& dialog, HWND focused, WPARAM key) {
    const int direction = IsShiftKeyDown() ? -1 : 1;
    switch (key) {
        case VK_TAB:
            if (!IsControlKeyDown())
                dialog.MoveFocus(direction);
            else
                dialog.Keys().OnNextPageKey(direction);
            return true;
        case VK_NEXT:
        case VK_PRIOR:
            return IsControlKeyDown() && dialog.Keys().OnNextPageKey(key == VK_NEXT ? 1 : -1);
        case VK_RETURN:
            if (auto* button = FocusedPushButton(focused))
                button->Click();
            else
                dialog.Keys().OnEnterKey();
            return true;
        case VK_ESCAPE:
            dialog.Keys().OnEscapeKeyOrCloseBox();
            return true;
        case VK_F1:
            if (IsControlKeyDown() || IsShiftKeyDown()) return false;
            dialog.Keys().OnHelpKey();
            return true;
        default:
            return false;
    }
}

}  // namespace

bool UseDialogKey(DialogWindow& dialog, const MSG& message) {
    if (message.message != WM_KEYDOWN) return false;
    if (MessageTarget* control = MessageTarget::Of(message.hwnd); control != nullptr && control != &dialog) {
        switch (control->OnDialogKey(static_cast<UINT>(message.wParam))) {
            case KeyUse::kTaken:
                return true;
            case KeyUse::kControl:
                TranslateMessage(&message);
                DispatchMessageW(&message);
                return true;
            case KeyUse::kDialog:
                break;
        }
    }
    return UseKey(dialog, message.hwnd, message.wParam);
}

}  // namespace permora::win32
