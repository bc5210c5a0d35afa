// A list view for assistive technology: a list whose items have names, selection and check states.
#pragma once

#include <QAccessibleWidget>
#include <QHash>

#include "framework/qt/list_widget.h"

namespace permora::qt {

// Registers the accessibility of list views with the toolkit. Further calls do nothing.
void InstallListAccessibility();

// Events for assistive technology. Without it nothing happens.
void NotifyRowsChanged(ListWidget& widget);
void NotifyStateChanged(ListWidget& widget, int row);
void NotifyFocusRow(ListWidget& widget, int row);

}  // namespace permora::qt
