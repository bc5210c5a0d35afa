#include "framework/win32/controls.h"

#include <initguid.h>
#include <oleacc.h>

#include "framework/win32/buttons.h"
#include "framework/win32/window.h"

namespace permora {
namespace win32 {

HWND MakeChild(CWnd& parent, const WindowSpec& spec, unsigned int id, const std::string& text) {
    HWND parentWindow = parent.GetSafeHwnd();
    const UINT dpi = GetDpiForWindow(parentWindow);
    const RECT place = ToDevice(spec.rect, dpi);
    const DWORD style = (spec.style & ~DWORD{WS_VISIBLE | WS_DISABLED | WS_POPUP}) | WS_CHILD;
    HWND made = CreateWindowExW(spec.extendedStyle, spec.className, Wide(text).c_str(), style, place.left,
                                place.top, place.right - place.left, place.bottom - place.top, parentWindow,
                                reinterpret_cast<HMENU>(UINT_PTR{id}), GetModuleHandleW(nullptr), nullptr);
    SendMessageW(made, WM_SETFONT, reinterpret_cast<WPARAM>(MessageFont(dpi)), FALSE);
    return made;
}

void AnnotateName(HWND window, const std::string& name) {
    IAccPropServices* services = nullptr;
    if (CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC, IID_IAccPropServices,
                         reinterpret_cast<void**>(&services)) != S_OK)
        return;  // the system then takes the label before the control for its name
    services->SetHwndPropStr(window, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF, PROPID_ACC_NAME,
                             Wide(name).c_str());
    services->Release();
}

}  // namespace win32

std::unique_ptr<NativeWindow> MakeNativeControl(CWnd& window, CWnd& parent, const ControlSpec& spec) {
    switch (spec.kind) {
        case ControlKind::kPushButton:
        case ControlKind::kCheckBox:
        case ControlKind::kRadioButton:
        case ControlKind::kBitmapButton:
            return std::make_unique<win32::ButtonWindow>(window, parent, spec);
        case ControlKind::kEdit:
            return win32::MakeEdit(window, parent, spec);
        case ControlKind::kComboBox:
            return win32::MakeComboBox(window, parent, spec);
        case ControlKind::kGroupBox:
        case ControlKind::kStaticText:
        case ControlKind::kStaticPicture:
        case ControlKind::kEtchedFrame:
        case ControlKind::kProgressBar:
            return win32::MakeStatic(window, parent, spec);
        case ControlKind::kListView:
            return win32::MakeListView(dynamic_cast<CListCtrl&>(window), parent, spec);
        case ControlKind::kTabs:
            return win32::MakeTabs(window, parent, spec);
        case ControlKind::kTreeView:
            return win32::MakeTreeView(dynamic_cast<CTreeCtrl&>(window), parent, spec);
        case ControlKind::kPageView:
            return win32::MakePageView(dynamic_cast<CPageView&>(window), parent, spec);
    }
    return nullptr;
}

}  // namespace permora
