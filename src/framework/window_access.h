// Access of the framework's sources to private members of the contract's classes.
#pragma once

#include <memory>
#include <vector>

#include "framework/dialog.h"
#include "framework/native.h"
#include "framework/window.h"

namespace permora {

class CFrameWnd;
class FrameEvents;

struct WindowAccess {
    static NativeWindow* Native(const CWnd& window) { return window.native.get(); }
    // Null when the window has none or one of another kind.
    template <class Kind>
    static Kind* NativeAs(const CWnd& window) {
        return dynamic_cast<Kind*>(window.native.get());
    }

    // Gives `window` its native half. `parent` is the owner of a window without WS_CHILD. A parent destroys
    // the windows of its children before its own.
    static void Attach(CWnd& window, std::unique_ptr<NativeWindow> native, CWnd* parent, unsigned int id,
                       DWORD style);
    // Makes a control of `parent`. False when it has a window already, or `parent` has none.
    static bool CreateControl(CWnd& window, CWnd& parent, const ControlSpec& spec);
    // Makes a control and hands its object to `parent`.
    static CWnd& AddControl(CWnd& parent, std::unique_ptr<CWnd> control, const ControlSpec& spec);
    // Changes the contract's half only; the back end moves the native window.
    static void SetParent(CWnd& window, CWnd& parent);
    // All child windows, in the order in which they were made.
    static const std::vector<CWnd*>& Children(const CWnd& window) { return window.children; }
    static CWnd& TopLevel(CWnd& window);

    static FrameEvents& Events(const CFrameWnd& frame);

    static unsigned int TemplateId(const CDialog& dialog) { return dialog.templateId; }
    static DialogLayout& Layout(CDialog& dialog) { return dialog.layout; }

    static bool Send(CWnd& window, Notification& notification) { return window.OnCmdMsg(notification); }
};

}  // namespace permora
