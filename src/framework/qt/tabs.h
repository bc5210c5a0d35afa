// The tabs of a property sheet.
#pragma once

#include <memory>

#include "framework/native.h"

namespace permora::qt {

std::unique_ptr<NativeTabs> MakeTabs(CWnd& window, CWnd& parent, const ControlSpec& spec);

}  // namespace permora::qt
