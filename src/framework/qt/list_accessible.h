// What assistive technology reads of a list view: a list whose items have names, selection and check states.
#pragma once

#include <QAccessibleWidget>
#include <QHash>

#include "framework/qt/list_widget.h"

namespace permora::qt {

// Makes the toolkit ask this file for list views. Once is enough, more do nothing.
void InstallListAccessibility();

// Told to whoever listens; nothing happens when nobody does.
void NotifyRowsChanged(ListWidget& widget);
void NotifyStateChanged(ListWidget& widget, int row);
void NotifyFocusRow(ListWidget& widget, int row);

}  // namespace permora::qt
