#include "framework/bars.h"

#include <algorithm>

#include "framework/command_routing.h"
#include "framework/dialog_controls.h"
#include "framework/frame_native.h"
#include "framework/frame_window.h"
#include "framework/resource_templates.h"
#include "framework/styles.h"
#include "framework/window_access.h"
#include "platform/api/messages.h"

namespace permora {
namespace {

constexpr unsigned int kReBarId = 59396;
constexpr unsigned int kDialogBarId = 59397;

void AttachBar(CWnd& bar, std::unique_ptr<NativeWindow> native, CFrameWnd& frame, unsigned int id) {
    WindowAccess::Attach(bar, std::move(native), &frame, id, WS_CHILD | WS_VISIBLE);
    WindowAccess::Native(bar)->SetAccessibleName(LoadCommandPrompt(id).tip);
    WindowAccess::Native(bar)->SetVisible(true);
}

template <class Kind>
bool CanBeMade(const CWnd& bar, const CFrameWnd& frame) {
    return !bar.HasWindow() && WindowAccess::NativeAs<Kind>(frame) != nullptr;
}

}  // namespace

// ---- Toolbar ----

bool CToolBar::Create(CFrameWnd& frame) {
    if (!CanBeMade<NativeFrame>(*this, frame)) return false;
    AttachBar(*this, MakeNativeToolBar(*this, frame, WindowAccess::Events(frame)), frame, kToolBarId);
    return true;
}

bool CToolBar::LoadToolBar(unsigned int id) {
    auto* nativeBar = WindowAccess::NativeAs<NativeToolBar>(*this);
    const auto toolBar = LoadToolbarTemplate(id);
    if (nativeBar == nullptr || !toolBar) return false;
    std::vector<ToolButton> made;
    buttons.clear();
    pressedButtons.clear();
    for (const unsigned int command : toolBar->commands) {
        made.push_back({command, command != 0 ? LoadCommandPrompt(command) : CommandPrompt{}});
        if (command != 0) buttons.push_back(command);
    }
    nativeBar->SetButtons(made);
    return true;
}

void CToolBar::TurnImagesWithLayout(const std::vector<unsigned int>& ids) {
    if (auto* nativeBar = WindowAccess::NativeAs<NativeToolBar>(*this)) nativeBar->TurnImagesWithLayout(ids);
}

void CToolBar::SetImageList(const CImageList& images) {
    if (auto* nativeBar = WindowAccess::NativeAs<NativeToolBar>(*this)) nativeBar->SetImages(images);
}

void CToolBar::EnableToolTips(bool enabled) {
    if (auto* nativeBar = WindowAccess::NativeAs<NativeToolBar>(*this)) nativeBar->SetTips(enabled);
}

void CToolBar::PressButton(unsigned int id, bool pressed) {
    std::erase(pressedButtons, id);
    if (pressed) pressedButtons.push_back(id);
    if (auto* nativeBar = WindowAccess::NativeAs<NativeToolBar>(*this)) nativeBar->ShowPressed(id, pressed);
}

bool CToolBar::IsButtonPressed(unsigned int id) const {
    return std::ranges::find(pressedButtons, id) != pressedButtons.end();
}

void CToolBar::UpdateButtons(CFrameWnd& frame) {
    auto* nativeBar = WindowAccess::NativeAs<NativeToolBar>(*this);
    if (nativeBar == nullptr) return;
    for (const unsigned int id : buttons) {
        const bool wasPressed = IsButtonPressed(id);
        const CommandState state = AskCommandState(frame, id, wasPressed);
        nativeBar->ShowEnabled(id, state.enabled);
        if (state.checked != wasPressed) PressButton(id, state.checked);
    }
}

// ---- Dialog bar ----

bool CDialogBar::Create(CFrameWnd& frame, unsigned int templateId) {
    const auto dialog = LoadDialogTemplate(templateId);
    if (!dialog || !CanBeMade<NativeFrame>(*this, frame)) return false;
    AttachBar(*this, MakeNativePane(*this, frame, templateId), frame, kDialogBarId);
    MoveWindow(DialogUnitsToPixels({0, 0, dialog->size.cx, dialog->size.cy}));
    CreateTemplateControls(*this, *dialog);
    WatchKeys(
        *this, [this] { Press(IDOK); }, [this] { Press(IDCANCEL); });
    return true;
}

void CDialogBar::Press(unsigned int button) {
    Notification notification{.id = button, .code = Notify::kClicked};
    OnCmdMsg(notification);
}

bool CDialogBar::OnCmdMsg(Notification& notification) {
    if (CWnd::OnCmdMsg(notification)) return true;
    auto* frame = dynamic_cast<CFrameWnd*>(&WindowAccess::TopLevel(*this));
    if (frame == nullptr) return false;
    if (notification.code != Notify::kClicked) return frame->OnCmdMsg(notification);
    frame->RunCommand(notification.id);
    return true;
}

// ---- Rebar ----

bool CReBar::Create(CFrameWnd& frame) {
    if (!CanBeMade<NativeFrame>(*this, frame)) return false;
    AttachBar(*this, MakeNativeReBar(*this, frame), frame, kReBarId);
    return true;
}

bool CReBar::AddBar(CWnd& bar, int leastWidth) {
    auto* nativeBar = WindowAccess::NativeAs<NativeReBar>(*this);
    if (nativeBar == nullptr || !bar.HasWindow()) return false;
    WindowAccess::SetParent(bar, *this);
    nativeBar->AddBand(bar, leastWidth);
    return true;
}

// ---- Status bar ----

bool CStatusBar::Create(CFrameWnd& frame) {
    if (!CanBeMade<NativeFrame>(*this, frame)) return false;
    AttachBar(*this, MakeNativeStatusBar(*this, frame), frame, kStatusBarId);
    return true;
}

void CStatusBar::SetIndicators(const std::vector<unsigned int>& paneIds) {
    auto* nativeBar = WindowAccess::NativeAs<NativeStatusBar>(*this);
    if (nativeBar == nullptr) return;
    constexpr int kFirstWidth = 100;
    std::vector<int> widths;
    texts.clear();
    for (const unsigned int id : paneIds) {
        widths.push_back(id == kSeparator ? NativeStatusBar::kStretch : kFirstWidth);
        texts.push_back(id == kSeparator ? std::string() : LoadResourceString(id));
    }
    nativeBar->SetPanes(widths);
    for (int pane = 0; pane < static_cast<int>(texts.size()); ++pane)
        ShowPane(pane);
}

void CStatusBar::SetPaneWidth(int pane, int width) {
    auto* nativeBar = WindowAccess::NativeAs<NativeStatusBar>(*this);
    if (nativeBar != nullptr && IsPane(pane)) nativeBar->SetPaneWidth(pane, width);
}

void CStatusBar::SetPaneText(int pane, const std::string& text) {
    if (!IsPane(pane)) return;
    texts[static_cast<std::size_t>(pane)] = text;
    if (pane == 0) prompt.clear();
    ShowPane(pane);
}

std::string CStatusBar::GetPaneText(int pane) const {
    if (!IsPane(pane)) return {};
    if (pane == 0 && !prompt.empty()) return prompt;
    return texts[static_cast<std::size_t>(pane)];
}

void CStatusBar::ShowPrompt(const std::string& text) {
    prompt = text;
    ShowPane(0);
}

void CStatusBar::ShowPane(int pane) {
    auto* nativeBar = WindowAccess::NativeAs<NativeStatusBar>(*this);
    if (nativeBar != nullptr && IsPane(pane)) nativeBar->SetPane(pane, GetPaneText(pane));
}

bool CStatusBar::IsPane(int pane) const {
    return pane >= 0 && static_cast<std::size_t>(pane) < texts.size();
}

}  // namespace permora
