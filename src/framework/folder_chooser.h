// The desktop's dialog for choosing a folder.
#pragma once

#include <string>

#include "framework/window.h"

namespace permora {

// Lets the user choose a folder and stores it in `path`. The dialog begins at `path` if that is a folder. On
// false, `path` is unchanged: the user chose none, or one without a path.
[[nodiscard]] bool ChooseFolder(CWnd& owner, const std::string& title, std::string& path);

}  // namespace permora
