// Keys of the toolkit as the system's virtual key codes.
#pragma once

#include <QKeyEvent>
#include <optional>

#include "framework/list_layout.h"
#include "framework/list_selection.h"

namespace permora::qt {

// 0 for keys that have no code or only modify others. Source: "Virtual-Key Codes" in the SDK's documentation.
unsigned int VirtualKeyOf(int key);
// The opposite; Qt::Key_unknown for other codes.
int KeyOf(unsigned int virtualKey);
// Where a navigation key leads, in a list whose layout has that direction.
std::optional<ListStep> StepOf(int key, Qt::LayoutDirection direction);
SelectMode ModeOf(Qt::KeyboardModifiers modifiers);

}  // namespace permora::qt
