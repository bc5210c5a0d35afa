// The desktop's dialog for choosing a folder.
#pragma once

#include <string>

#include "framework/window.h"

namespace permora {

// Lets the user choose a folder, beginning at `path` where that is one; `path` is then the one chosen. False,
// and `path` as it was, when the user chose none or one that no path leads to.
[[nodiscard]] bool ChooseFolder(CWnd& owner, const std::string& title, std::string& path);

}  // namespace permora
