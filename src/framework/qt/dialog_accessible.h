// Dialogs for assistive technology: the toolkit does not tell that they are modal, and takes edges in them
// for windows.
#pragma once

namespace permora::qt {

// Registers the accessibility of dialogs with the toolkit. Further calls do nothing.
void InstallDialogAccessibility();

}  // namespace permora::qt
