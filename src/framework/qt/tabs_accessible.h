// The tabs of a sheet for assistive technology. The toolkit's own never say which one is selected, and always
// say that it has the keyboard.
#pragma once

namespace permora::qt {

// Registers the accessibility of tabs with the toolkit. Further calls do nothing.
void InstallTabsAccessibility();

}  // namespace permora::qt
