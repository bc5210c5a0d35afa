#include "framework/controls.h"

#include "framework/command_routing.h"
#include "framework/radio_group.h"
#include "framework/styles.h"
#include "framework/window_access.h"

namespace permora {

CheckState CButton::GetCheck() const {
    const auto* button = WindowAccess::NativeAs<NativeButton>(*this);
    return button != nullptr ? button->Check() : CheckState::kClear;
}

void CButton::SetCheck(CheckState state) {
    auto* button = WindowAccess::NativeAs<NativeButton>(*this);
    if (button == nullptr) return;
    if (state == CheckState::kChecked && IsRadioButton(*this)) {
        for (CWnd* other : RadioGroupOf(*this))
            if (other != this) WindowAccess::NativeAs<NativeButton>(*other)->SetCheck(CheckState::kClear);
    }
    button->SetCheck(state);
}

bool CBitmapButton::Create(CWnd& owner, const Rect& rect, unsigned int id) {
    constexpr DWORD kStyle = WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_OWNERDRAW;
    const ControlSpec spec{.kind = ControlKind::kBitmapButton, .id = id, .style = kStyle, .rect = rect};
    if (!WindowAccess::CreateControl(*this, owner, spec)) return false;
    WindowAccess::Native(*this)->SetAccessibleName(LoadCommandPrompt(id).tip);
    return true;
}

bool CBitmapButton::LoadBitmaps(unsigned int normal, unsigned int pressed, unsigned int focused,
                                unsigned int disabled) {
    auto* button = WindowAccess::NativeAs<NativeButton>(*this);
    const CIcon normalPicture = CIcon::FromBitmap(normal);
    if (button == nullptr || !normalPicture) return false;
    button->SetPictures(normalPicture, CIcon::FromBitmap(pressed), CIcon::FromBitmap(focused),
                        CIcon::FromBitmap(disabled));
    return true;
}

void CEdit::SelectAll() {
    if (auto* edit = WindowAccess::NativeAs<NativeEdit>(*this)) edit->SelectAll();
}

void CEdit::SelectStart(const std::string& start) {
    if (auto* edit = WindowAccess::NativeAs<NativeEdit>(*this)) edit->SelectStart(start);
}

void CProgressCtrl::SetPos(int percent) {
    if (auto* bar = WindowAccess::NativeAs<NativeProgressBar>(*this)) bar->SetPosition(percent);
}

int CComboBox::AddString(const std::string& text) {
    auto* combo = WindowAccess::NativeAs<NativeComboBox>(*this);
    return combo != nullptr ? combo->AddString(text) : -1;
}

int CComboBox::GetCurSel() const {
    const auto* combo = WindowAccess::NativeAs<NativeComboBox>(*this);
    return combo != nullptr ? combo->Selection() : -1;
}

void CComboBox::SetCurSel(int index) {
    auto* combo = WindowAccess::NativeAs<NativeComboBox>(*this);
    if (combo != nullptr) combo->Select(index >= 0 && index < combo->Count() ? index : -1);
}

}  // namespace permora
