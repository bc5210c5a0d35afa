// Makes the controls of a dialog template: what dialogs, pages and dialog bars share.
#pragma once

#include "framework/geometry.h"
#include "framework/resource_templates.h"
#include "framework/window.h"

namespace permora {

// Dialog units in logical pixels of the dialog font, rounded to the nearest.
Rect DialogUnitsToPixels(const Rect& units);

// Makes all controls of `dialog` in `window`, which must have a window itself: with their pictures, texts,
// groups of radio buttons, labels' mnemonics and accessible names.
void CreateTemplateControls(CWnd& window, const DialogTemplate& dialog);

}  // namespace permora
