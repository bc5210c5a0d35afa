#include "framework/win32/message_box.h"

#include "framework/styles.h"
#include "framework/win32/text.h"

namespace permora::win32 {
namespace {

constexpr UINT_PTR kBoxRulesId = 1;
constexpr const wchar_t* kRulesProperty = L"PermoraBoxRules";
constexpr const wchar_t* kSystemDialogClass = L"#32770";
constexpr int kBoxTextId = 0xFFFF;

MessageBoxRules* theRules = nullptr;  // of the user-interface thread

// The button that changes least; 0 for another dialog of the system.
int SafestButtonOf(HWND box) {
    if (GetDlgItem(box, kBoxTextId) == nullptr) return 0;
    for (const int id : {IDCANCEL, IDNO, IDOK})
        if (GetDlgItem(box, id) != nullptr) return id;
    return 0;
}

}  // namespace

MessageBoxRules::MessageBoxRules()
    : hook(SetWindowsHookExW(WH_CBT, OnWindow, nullptr, GetCurrentThreadId())) {
    theRules = this;
}

MessageBoxRules::~MessageBoxRules() {
    UnhookWindowsHookEx(hook);
    theRules = nullptr;
}

// A box has its buttons when it becomes active for the first time.
LRESULT CALLBACK MessageBoxRules::OnWindow(int code, WPARAM window, LPARAM details) {
    HWND box = reinterpret_cast<HWND>(window);
    if (code == HCBT_ACTIVATE && ClassOf(box) == kSystemDialogClass &&
        GetPropW(box, kRulesProperty) == nullptr) {
        if (const int safest = SafestButtonOf(box); safest != 0) {
            SetPropW(box, kRulesProperty, theRules);
            SetWindowSubclass(box, OnBoxMessage, kBoxRulesId, reinterpret_cast<DWORD_PTR>(theRules));
            ++theRules->openBoxes;
            // Posted, since the system has yet to choose its own.
            PostMessageW(box, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(box, safest)), TRUE);
        }
    }
    return CallNextHookEx(nullptr, code, window, details);
}

LRESULT CALLBACK MessageBoxRules::OnBoxMessage(HWND box, UINT code, WPARAM wide, LPARAM wider,
                                               UINT_PTR /*id*/, DWORD_PTR self) {
    if (code == WM_COMMAND && LOWORD(wide) == IDCANCEL && GetDlgItem(box, IDCANCEL) == nullptr)
        wide = MAKEWPARAM(SafestButtonOf(box), BN_CLICKED);  // Escape
    if (code == WM_NCDESTROY) {
        RemoveWindowSubclass(box, OnBoxMessage, kBoxRulesId);
        RemovePropW(box, kRulesProperty);
        --reinterpret_cast<MessageBoxRules*>(self)->openBoxes;
    }
    return DefSubclassProc(box, code, wide, wider);
}

}  // namespace permora::win32
