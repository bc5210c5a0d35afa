#include "framework/frame_window.h"

#include <algorithm>
#include <vector>

#include "framework/bars.h"
#include "framework/command_routing.h"
#include "framework/frame_native.h"
#include "framework/menu_items.h"
#include "framework/resource_templates.h"
#include "framework/screen_placement.h"
#include "framework/styles.h"
#include "framework/window_access.h"
#include "platform/api/shell.h"

namespace permora {
namespace {

// The class library's numbers for every program: a command, and the text while nothing is pointed at.
constexpr unsigned int kExitCommand = 57665;
constexpr unsigned int kIdleMessage = 57345;

constexpr DWORD kFrameStyle{WS_CAPTION | WS_SYSMENU | WS_THICKFRAME};

NativeFrame* NativeOf(const CFrameWnd& frame) {
    return WindowAccess::NativeAs<NativeFrame>(frame);
}

// The first window of `Kind` among the children of `window` and their children: bars may be in a rebar.
template <class Kind>
Kind* FindBar(const CWnd* window) {
    if (window == nullptr) return nullptr;
    for (CWnd* child : WindowAccess::Children(*window)) {
        if (auto* bar = dynamic_cast<Kind*>(child)) return bar;
        if (auto* bar = FindBar<Kind>(child)) return bar;
    }
    return nullptr;
}

bool IsBar(const CWnd& window) {
    return dynamic_cast<const CReBar*>(&window) != nullptr ||
           dynamic_cast<const CToolBar*>(&window) != nullptr ||
           dynamic_cast<const CDialogBar*>(&window) != nullptr;
}

// A request that arrives after a modal window has opened would act behind it, or destroy it.
bool TakesRequests(const CFrameWnd& frame) {
    return frame.IsWindowEnabled() && !IsModalWindowOpen();
}

// A template gives its bar a height, which its controls do not.
int HeightOf(const CWnd& bar) {
    if (dynamic_cast<const CDialogBar*>(&bar) != nullptr) return bar.GetClientRect().Height();
    return WindowAccess::Native(bar)->PreferredSize().cy;
}

bool IsShown(const CWnd& window) {
    return (window.GetStyle() & WS_VISIBLE) != 0;
}

}  // namespace

struct CFrameWnd::Parts final : public FrameEvents {
    explicit Parts(CFrameWnd& owner) : frame(owner) {}

    void OnMenuOpening(CMenu::Items& items) override { UpdateMenuStates(items, frame); }
    void OnHighlight(unsigned int id) override { frame.ShowPrompt(id); }
    void OnChosen(unsigned int id) override { frame.RunCommand(id); }
    void OnEscape(unsigned int id) override {
        if (!TakesRequests(frame) || !frame.StopWork()) frame.RunCommand(id);
    }
    void OnCloseRequest() override {
        if (TakesRequests(frame)) frame.OnClose();
    }
    void OnIdle() override {
        if (auto* toolBar = FindBar<CToolBar>(&frame)) toolBar->UpdateButtons(frame);
    }

    CFrameWnd& frame;
    CMenu menu;
    CWnd* view = nullptr;  // only meaningful while it is one of the frame's children
};

FrameEvents& WindowAccess::Events(const CFrameWnd& frame) {
    return *frame.parts;
}

CFrameWnd::CFrameWnd() : parts(std::make_unique<Parts>(*this)) {}

CFrameWnd::~CFrameWnd() {
    CWnd::DestroyWindow();  // it reports to `parts`
}

bool CFrameWnd::LoadFrame(unsigned int id) {
    if (HasWindow()) return false;
    WindowAccess::Attach(*this, MakeNativeFrame(*this, id, *parts), nullptr, 0, kFrameStyle);
    NativeFrame& nativeFrame = *NativeOf(*this);
    parts->view = nullptr;
    parts->menu = CMenu::Load(id);
    if (parts->menu) nativeFrame.SetMenu(parts->menu);
    if (const auto accelerators = LoadAcceleratorTable(id)) nativeFrame.SetAccelerators(*accelerators);
    nativeFrame.SetIcon(CIcon::Load(id));
    SetWindowText(LoadResourceString(id));
    if (!OnCreate()) {
        DestroyWindow();
        return false;
    }
    auto* statusBar = FindBar<CStatusBar>(this);
    if (statusBar != nullptr && statusBar->GetPaneText(0).empty())
        statusBar->SetPaneText(0, LoadResourceString(kIdleMessage));
    RecalcLayout();
    return true;
}

CMenu CFrameWnd::GetMenu() const {
    return parts->menu;
}

WindowPlacement CFrameWnd::GetPlacement() const {
    const auto* nativeFrame = NativeOf(*this);
    return nativeFrame != nullptr ? nativeFrame->Placement() : WindowPlacement{};
}

void CFrameWnd::SetPlacement(const WindowPlacement& placement) {
    auto* nativeFrame = NativeOf(*this);
    if (nativeFrame == nullptr) return;
    nativeFrame->style |= WS_VISIBLE;
    nativeFrame->Place({PutOnScreen(placement.normalRect, ScreenAreas()), placement.showState});
    SetFocus();
}

void CFrameWnd::SetView(CWnd& view) {
    parts->view = &view;
    RecalcLayout();
}

void CFrameWnd::RecalcLayout() {
    if (!HasWindow()) return;
    Rect rest = GetClientRect();
    CWnd* view = nullptr;
    for (CWnd* child : WindowAccess::Children(*this)) {
        if (child == parts->view) view = child;
        if (!IsShown(*child)) continue;
        const int height = HeightOf(*child);
        if (IsBar(*child)) {
            child->MoveWindow({rest.left, rest.top, rest.right, rest.top + height});
            rest.top = std::min(rest.top + height, rest.bottom);
        } else if (dynamic_cast<CStatusBar*>(child) != nullptr) {
            child->MoveWindow({rest.left, rest.bottom - height, rest.right, rest.bottom});
            rest.bottom = std::max(rest.bottom - height, rest.top);
        }
    }
    if (view != nullptr) view->MoveWindow(rest);
}

void CFrameWnd::RunCommand(unsigned int id) {
    if (TakesRequests(*this)) SendCommand(*this, id);
}

void CFrameWnd::ShowPrompt(unsigned int id) {
    auto* statusBar = FindBar<CStatusBar>(this);
    if (statusBar != nullptr) statusBar->ShowPrompt(id != 0 ? LoadCommandPrompt(id).status : std::string());
}

void CFrameWnd::Activate() {
    if (auto* nativeFrame = NativeOf(*this)) nativeFrame->Activate();
    SetFocus();
}

void CFrameWnd::PostClose() {
    if (auto* nativeFrame = NativeOf(*this)) nativeFrame->PostClose();
}

bool CFrameWnd::OnCmdMsg(Notification& notification) {
    if (CWnd::OnCmdMsg(notification)) return true;
    CWinApp* application = GetApp();
    return application != nullptr && application->OnCmdMsg(notification);
}

void CFrameWnd::OnClose() {
    DestroyWindow();
    StopToolkit();
}

void CFrameWnd::OnSize(Size /*client*/) {
    RecalcLayout();
}

void CFrameWnd::OnSetFocus() {
    const auto& windows = WindowAccess::Children(*this);
    if (std::ranges::find(windows, parts->view) != windows.end()) parts->view->SetFocus();
}

const MessageMap& CFrameWnd::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<CFrameWnd>(
        CWnd::GetMessageMap(),
        {
            {kToolBarId, kStatusBarId, Notify::kCommand, &CFrameWnd::OnToggleBar},
            {kToolBarId, kStatusBarId, Notify::kUpdateCommand, &CFrameWnd::OnUpdateBar},
            {kExitCommand, Notify::kCommand, &CFrameWnd::PostClose},
        });
    return kMap;
}

void CFrameWnd::OnToggleBar(Notification& notification) {
    CWnd* bar = ControlBar(notification.id);
    if (bar == nullptr) return;
    bar->ShowWindow(IsShown(*bar) ? SW_HIDE : SW_SHOW);
    if (CWnd* holder = bar->GetParent()) {
        if (auto* reBar = WindowAccess::NativeAs<NativeReBar>(*holder)) reBar->LayOut();
    }
    RecalcLayout();
}

void CFrameWnd::OnUpdateBar(Notification& notification) {
    const CWnd* bar = ControlBar(notification.id);
    notification.state = {bar != nullptr, bar != nullptr && IsShown(*bar)};
}

CWnd* CFrameWnd::ControlBar(unsigned int id) const {
    if (id == kToolBarId) return FindBar<CToolBar>(this);
    return FindBar<CStatusBar>(this);
}

}  // namespace permora
