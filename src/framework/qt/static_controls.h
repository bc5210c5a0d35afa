// Texts, pictures, etched frames and progress bars: controls that take no input.
#pragma once

#include <memory>

#include "framework/native.h"

namespace permora::qt {

std::unique_ptr<NativeWindow> MakeStatic(CWnd& window, CWnd& parent, const ControlSpec& spec);

}  // namespace permora::qt
