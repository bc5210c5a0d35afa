#include "framework/modal_window.h"

#include <algorithm>

#include "framework/controls.h"
#include "framework/frame_window.h"
#include "framework/radio_group.h"
#include "framework/styles.h"
#include "framework/window_access.h"
#include "platform/api/messages.h"

namespace permora {
namespace {

bool IsDefaultButton(const CWnd& control) {
    return dynamic_cast<const CButton*>(&control) != nullptr &&
           (control.GetStyle() & BS_TYPEMASK) == BS_DEFPUSHBUTTON;
}

CWnd* DefaultButtonOf(const CWnd& window) {
    const auto& children = WindowAccess::Children(window);
    const auto found = std::ranges::find_if(children, [](const CWnd* child) {
        return IsDefaultButton(*child) && (child->GetStyle() & WS_VISIBLE) != 0;
    });
    return found != children.end() ? *found : nullptr;
}

bool IsTabStop(const CWnd& control) {
    return (control.GetStyle() & WS_TABSTOP) != 0 || IsRadioButton(control);
}

bool CanTakeFocus(const CWnd& control) {
    return IsTabStop(control) && control.IsWindowEnabled() && (control.GetStyle() & WS_VISIBLE) != 0;
}

// The keyboard enters a group of radio buttons at the checked one.
CWnd& EntryOf(CWnd& control) {
    if (!IsRadioButton(control)) return control;
    const std::vector<CWnd*> group = RadioGroupOf(control);
    const auto checked = std::ranges::find_if(group, [](const CWnd* button) {
        return dynamic_cast<const CButton&>(*button).IsChecked() && CanTakeFocus(*button);
    });
    return checked != group.end() ? **checked : control;
}

void AppendTabStops(CWnd& window, std::vector<CWnd*>& order) {
    if (IsTabStop(window)) order.push_back(&window);
    for (CWnd* child : WindowAccess::Children(window))
        AppendTabStops(*child, order);
}

}  // namespace

OwnerDisabler::OwnerDisabler(CWnd* owner)
    : top(owner != nullptr ? &WindowAccess::TopLevel(*owner) : nullptr) {
    if (top == nullptr || !top->IsWindowEnabled()) top = nullptr;
    // The toolkit's modality blocks the input; the bit is for callers that ask. Greying the contents would
    // only flicker.
    if (top != nullptr) WindowAccess::Native(*top)->style |= WS_DISABLED;
}

OwnerDisabler::~OwnerDisabler() {
    if (top != nullptr && top->HasWindow()) WindowAccess::Native(*top)->style &= ~DWORD{WS_DISABLED};
}

ModalWindow::ModalWindow(CWnd& served, CWnd* servedOwner, DWORD style, unsigned int servedTemplate)
    : window(served), owner(servedOwner), templateId(servedTemplate) {
    if (owner != nullptr && !owner->HasWindow()) owner = nullptr;
    WindowAccess::Attach(window, MakeNativeDialog(window, owner, style, templateId, *this), owner, templateId,
                         style & ~DWORD{WS_CHILD | WS_VISIBLE | WS_DISABLED});
}

void ModalWindow::SetClientSize(Size size, Sizing sizing) {
    WindowAccess::NativeAs<NativeDialog>(window)->SetClientSize(size, sizing);
}

void ModalWindow::Enlarge(Size client) {
    WindowAccess::NativeAs<NativeDialog>(window)->Enlarge(client);
}

void ModalWindow::SetTabOrder(const std::vector<CWnd*>& windows) {
    std::vector<CWnd*> order;
    for (CWnd* each : windows)
        AppendTabStops(*each, order);
    WindowAccess::NativeAs<NativeDialog>(window)->SetTabOrder(order);
}

void ModalWindow::Run() {
    const OwnerDisabler disabled(owner);
    auto* native = WindowAccess::NativeAs<NativeDialog>(window);
    native->style |= WS_VISIBLE;
    native->RunModal();
}

void ModalWindow::End() {
    if (auto* native = WindowAccess::NativeAs<NativeDialog>(window)) native->EndModal();
}

void ModalWindow::ShowBeside() {
    auto* native = WindowAccess::NativeAs<NativeDialog>(window);
    native->style |= WS_VISIBLE;
    native->ShowBeside();
}

void ModalWindow::OnEnterKey() {
    Press(DefaultButtonOf(window), IDOK);
}

void ModalWindow::OnEscapeKeyOrCloseBox() {
    Press(window.GetDlgItem(IDCANCEL), IDCANCEL);
}

bool ModalWindow::OnNextPageKey(int direction) {
    return onNextPage && onNextPage(direction);
}

void ModalWindow::OnHelpKey() {
    if (CWinApp* application = GetApp()) application->OnHelp(window, onHelp ? onHelp() : templateId);
}

void ModalWindow::Press(CWnd* button, unsigned int id) {
    if (button != nullptr) {
        if (auto* native = WindowAccess::NativeAs<NativeButton>(*button)) native->Click();
        return;
    }
    Notification notification{.id = id, .code = Notify::kClicked};
    WindowAccess::Send(window, notification);
}

void FocusFirstControl(CWnd& window) {
    const auto& children = WindowAccess::Children(window);
    const auto first = std::ranges::find_if(children, [](const CWnd* child) { return CanTakeFocus(*child); });
    if (first == children.end()) return;
    CWnd& control = EntryOf(**first);
    control.SetFocus();
    if (auto* edit = dynamic_cast<CEdit*>(&control)) edit->SelectAll();
}

}  // namespace permora
