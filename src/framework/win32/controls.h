// The controls of this back end, made by kind.
#pragma once

#include <memory>

#include "framework/list_ctrl.h"
#include "framework/native.h"
#include "framework/page_view.h"
#include "framework/tree_ctrl.h"

namespace permora::win32 {

std::unique_ptr<NativeWindow> MakeEdit(CWnd& window, CWnd& parent, const ControlSpec& spec);
std::unique_ptr<NativeWindow> MakeComboBox(CWnd& window, CWnd& parent, const ControlSpec& spec);
// Texts, pictures, frames and progress bars.
std::unique_ptr<NativeWindow> MakeStatic(CWnd& window, CWnd& parent, const ControlSpec& spec);
std::unique_ptr<NativeWindow> MakeTabs(CWnd& window, CWnd& parent, const ControlSpec& spec);
std::unique_ptr<NativeWindow> MakeListView(CListCtrl& list, CWnd& parent, const ControlSpec& spec);
std::unique_ptr<NativeWindow> MakeTreeView(CTreeCtrl& tree, CWnd& parent, const ControlSpec& spec);
std::unique_ptr<NativeWindow> MakePageView(CPageView& page, CWnd& parent, const ControlSpec& spec);

}  // namespace permora::win32
