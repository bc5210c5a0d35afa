#include "framework/window.h"

#include <algorithm>

#include "framework/styles.h"
#include "framework/window_access.h"
#include "framework/worker_updates.h"

namespace permora {

void NativeWindowDeleter::operator()(NativeWindow* window) const {
    delete window;
}

bool NativeWindow::ReportNotification(Notification& notification) {
    CWnd* parent = target.parent;
    if (parent == nullptr) return false;
    notification.id = target.controlId;
    // Modality blocks the user's input to a disabled window, but not clicks by assistive technology.
    if (notification.code == Notify::kClicked && !WindowAccess::TopLevel(target).IsWindowEnabled())
        return true;
    return parent->OnCmdMsg(notification);
}

bool NativeWindow::ReportNotification(Notify code) {
    Notification notification{.code = code};
    return ReportNotification(notification);
}

void WindowAccess::Attach(CWnd& window, std::unique_ptr<NativeWindow> native, CWnd* parent, unsigned int id,
                          DWORD style) {
    window.ownedControls.clear();  // of the window before
    native->style = style;
    window.native.reset(native.release());
    window.parent = parent;
    window.controlId = id;
    if (parent != nullptr && (style & WS_CHILD) != 0) parent->children.push_back(&window);
    if ((style & WS_DISABLED) != 0) window.native->SetEnabled(false);
}

bool WindowAccess::CreateControl(CWnd& window, CWnd& parent, const ControlSpec& spec) {
    if (window.HasWindow() || !parent.HasWindow()) return false;
    Attach(window, MakeNativeControl(window, parent, spec), &parent, spec.id, spec.style);
    if ((spec.style & WS_VISIBLE) != 0) window.native->SetVisible(true);
    return true;
}

CWnd& WindowAccess::AddControl(CWnd& parent, std::unique_ptr<CWnd> control, const ControlSpec& spec) {
    CreateControl(*control, parent, spec);
    return *parent.ownedControls.emplace_back(std::move(control));
}

void WindowAccess::SetParent(CWnd& window, CWnd& parent) {
    if (window.parent != nullptr) std::erase(window.parent->children, &window);
    window.parent = &parent;
    parent.children.push_back(&window);
}

CWnd& WindowAccess::TopLevel(CWnd& window) {
    CWnd* top = &window;
    while (top->parent != nullptr && (top->GetStyle() & WS_CHILD) != 0)
        top = top->parent;
    return *top;
}

CWnd::CWnd() = default;

CWnd::~CWnd() {
    ReleaseWindow();
    ForgetQueued(*this);
}

bool CWnd::CreateChild(CWnd& owner, const Rect& rect, unsigned int id) {
    if (HasWindow() || !owner.HasWindow()) return false;
    WindowAccess::Attach(*this, MakeNativePane(*this, owner, id), &owner, id, WS_CHILD | WS_VISIBLE);
    native->Move(rect);
    native->SetVisible(true);
    return true;
}

void CWnd::DestroyWindow() {
    if (native == nullptr) return;
    OnDestroy();
    ReleaseWindow();
}

void CWnd::ReleaseWindow() {
    if (native == nullptr) return;
    while (!children.empty())
        children.back()->DestroyWindow();  // which takes it out of the list
    native.reset();
    ForgetQueued(*this);
    if (parent != nullptr) std::erase(parent->children, this);
    parent = nullptr;
}

HWND CWnd::GetSafeHwnd() const {
    return native != nullptr ? native->Handle() : nullptr;
}

void CWnd::SetWindowText(const std::string& text) {
    if (!IsUiThread()) {
        QueueText(*this, text);
        return;
    }
    ForgetQueuedText(*this);
    if (native != nullptr) native->SetText(text);
}

std::string CWnd::GetWindowText() const {
    if (native == nullptr) return {};
    if (auto queued = QueuedText(*this)) return *std::move(queued);
    return native->Text();
}

DWORD CWnd::GetStyle() const {
    return native != nullptr ? native->style : 0;
}

void CWnd::ModifyStyle(DWORD remove, DWORD add) {
    if (native == nullptr) return;
    const DWORD before = native->style;
    native->style = (before & ~remove) | add;
    const DWORD changed = before ^ native->style;
    if ((changed & WS_DISABLED) != 0) native->SetEnabled((native->style & WS_DISABLED) == 0);
    if ((changed & WS_VISIBLE) != 0) native->SetVisible((native->style & WS_VISIBLE) != 0);
    if ((changed & ~DWORD{WS_DISABLED | WS_VISIBLE}) != 0) native->StyleChanged(before);
}

void CWnd::EnableWindow(bool enable) {
    enable ? ModifyStyle(WS_DISABLED, 0) : ModifyStyle(0, WS_DISABLED);
}

void CWnd::RedrawWindow() {
    if (!IsUiThread())
        QueueRedraw(*this);
    else if (native != nullptr)
        native->Redraw();
}

void CWnd::SetToolTip(const std::string& text) {
    if (native != nullptr) native->SetToolTip(text);
}

bool CWnd::IsWindowEnabled() const {
    return native != nullptr && (native->style & WS_DISABLED) == 0;
}

void CWnd::ShowWindow(int showCommand) {
    if (showCommand == SW_HIDE)
        ModifyStyle(WS_VISIBLE, 0);
    else
        ModifyStyle(0, WS_VISIBLE);
}

void CWnd::SetFocus() {
    if (native != nullptr) native->SetFocus();
}

bool CWnd::HasFocus() const {
    return native != nullptr && native->HasFocus();
}

Rect CWnd::GetWindowRect() const {
    return native != nullptr ? native->ScreenRect() : Rect{};
}

Rect CWnd::GetClientRect() const {
    return native != nullptr ? native->ClientRect() : Rect{};
}

void CWnd::MoveWindow(const Rect& rect) {
    if (native != nullptr) native->Move(rect);
}

CWnd* CWnd::GetDlgItem(unsigned int id) const {
    const auto found =
        std::ranges::find_if(children, [id](const CWnd* child) { return child->controlId == id; });
    return found != children.end() ? *found : nullptr;
}

}  // namespace permora
