// Lets a window of the contract paint into its widget.
#pragma once

#include <QWidget>
#include <functional>

#include "framework/device_context.h"

namespace permora::qt {

// Calls `paint` with a device context on `widget`. Only inside the widget's paint event.
void PaintWith(QWidget& widget, const std::function<void(CDC&)>& paint);

}  // namespace permora::qt
