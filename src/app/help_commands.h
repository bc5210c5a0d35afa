// The commands of the Help menu that open something outside the program. A failure is shown in an error box
// of `owner`.
#pragma once

#include <functional>
#include <string>

#include "platform/api/base.h"

namespace permora {

// The maker's web site.
inline constexpr const char* kWebSite = "https://valdrix.example/";

// The help file in the program's folder; its pages where the desktop has no viewer for the file. Where it has
// none for these either, `showOwn` shows them in the program's own window, or returns false.
void OpenHelp(HWND owner, const std::string& programFolder, const std::function<bool()>& showOwn);
// The page on technical support inside the help file, or the page alone without a viewer.
void OpenSupportPage(HWND owner, const std::string& programFolder);
void OpenWebSite(HWND owner);

}  // namespace permora
