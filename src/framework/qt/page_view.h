// The widget of pages.
#pragma once

#include <memory>

#include "framework/page_native.h"

namespace permora::qt {

std::unique_ptr<NativeWindow> MakePageView(CPageView& window, CWnd& parent, const ControlSpec& spec);

}  // namespace permora::qt
